#include "Look.h"

#include "inventory/Health.h"

namespace views {
namespace {

using inventory::Level;

template <typename Part>
Look LookOfPart(const Part& part) {
    return IsBusy(part) ? Look::Busy : LookOf(part.health);
}

}  // namespace

Look LookOf(Level level) {
    constexpr Look kLooks[] = {Look::Well, Look::Unknown, Look::Warning, Look::Critical};
    return kLooks[static_cast<std::size_t>(level)];
}

Look LookOf(const inventory::Drive& drive) {
    return LookOfPart(drive);
}

Look LookOf(const inventory::BackupUnit& unit) {
    return LookOfPart(unit);
}

Look LookOf(const inventory::Finding& finding) {
    return finding.isAccepted ? Look::Accepted : LookOf(finding.level);
}

Look LookOfStatus(const inventory::Controller& controller) {
    const bool isMisleading = controller.statusHealth == Level::Ok && controller.health != Level::Ok;
    return isMisleading ? Look::Plain : LookOf(controller.statusHealth);
}

}  // namespace views
