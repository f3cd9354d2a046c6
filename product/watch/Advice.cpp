#include "watch/Watch.h"

#include "basics/Words.h"

namespace watch {
namespace {

using inventory::Finding;
using inventory::Level;
using inventory::PartKind;
using inventory::Rule;

constexpr const char* kLook = "Look at the server with mngsrvraid show";

bool Tells(const Finding& finding, std::string_view word) {
    return basics::InLowerCase(finding.what).find(word) != std::string::npos;
}

std::string AboutDrive(const Finding& finding) {
    const std::string drive = finding.product.empty() ? "another one" : "another " + finding.product;
    if (Tells(finding, "rebuild")) {
        return "Wait until the drive is rebuilt, and pull none meanwhile.";
    }
    if (finding.level == Level::Unknown) {
        return std::string(kLook) + "; a drive whose state is not known may be failing.";
    }
    if (finding.what.starts_with("failure predicted") || finding.what.starts_with("SMART")) {
        return "Have " + drive + " at hand, and replace the drive before it fails.";
    }
    return "Replace the drive by " + drive + "; see that it is the one with this serial number.";
}

std::string AboutLogicalDrive(const Finding& finding) {
    if (finding.level == Level::Unknown || Tells(finding, "initializing") ||
        Tells(finding, "reconstruction")) {
        return finding.level == Level::Unknown ? std::string(kLook) + "."
                                               : "Wait until that is done, and pull no drive meanwhile.";
    }
    if (Tells(finding, "degraded")) {
        return Tells(finding, ", being rebuilt")
                   ? "Wait until it is rebuilt, pull no drive meanwhile, and check that there is a backup."
                   : "Check that there is a backup, then replace the drive of its group that is gone.";
    }
    return "Its data cannot be reached: see what its drives say before anything is changed, and find the "
           "backup.";
}

std::string AboutState(const Finding& finding) {
    switch (finding.kind) {
        case PartKind::Drive:
            return AboutDrive(finding);
        case PartKind::LogicalDrive:
            return AboutLogicalDrive(finding);
        case PartKind::Unit:
            return "Have the unit checked or replaced; until then the controller may write without its "
                   "cache.";
        case PartKind::Group:
        case PartKind::Controller:
            break;
    }
    return finding.level == Level::Unknown
               ? std::string(kLook) + "; if its reports stay incomplete, send a capture to support."
               : "Ask support, with a capture (mngsrvraid capture).";
}

}  // namespace

std::string AdviceFor(const Finding& finding) {
    switch (finding.rule) {
        case Rule::State:
        case Rule::Repetition:
            return AboutState(finding);
        case Rule::Presence:
        case Rule::Place:
        case Rule::Use:
            return "Find out who changed it; where it is meant, save what is expected again "
                   "(mngsrvraid expect --save).";
        case Rule::Temperature:
            return "Check the fans and the air in the room.";
        case Rule::MediaErrors:
        case Rule::MediaErrorGrowth:
            return "Have a drive at hand: one that finds more and more bad places is about to fail.";
        case Rule::Spares:
            break;
    }
    return "Add a spare, or the next failed drive waits for somebody to come.";
}

}  // namespace watch
