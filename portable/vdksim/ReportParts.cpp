#include "ReportParts.h"

#include "Words.h"

namespace vdksim {

namespace {

constexpr std::string_view kTitleHead = "### ";
constexpr std::string_view kSmartTitleHead = "### SMART Information ###";

bool IsDriveHeader(std::string_view line) {
    return line.size() > 2 && line.starts_with("PD") && line[2] >= '0' && line[2] <= '9';
}

// The next line with its feed, which the text then no longer has.
std::string_view TakeLine(std::string_view& text) {
    const auto feed = text.find('\n');
    const std::string_view line = text.substr(0, feed == std::string_view::npos ? text.size() : feed + 1);
    text.remove_prefix(line.size());
    return line;
}

// The first number of this key.
std::optional<std::uint32_t> NumberOf(std::string_view key, std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        const auto colon = line.find(':');
        if (colon != std::string_view::npos && Trimmed(line.substr(0, colon)) == key) {
            return WholeNumber<std::uint32_t>(Trimmed(line.substr(colon + 1)));
        }
    }
    return std::nullopt;
}

}  // namespace

std::string WithoutSmart(std::string_view report) {
    std::string rest;
    bool inSmart = false;
    while (!report.empty()) {
        const std::string_view line = TakeLine(report);
        if (line.starts_with(kTitleHead) || IsDriveHeader(line)) {
            inSmart = line.starts_with(kSmartTitleHead);
        }
        if (!inSmart) {
            rest += line;
        }
    }
    return rest;
}

std::optional<std::string> DriveIn(std::string_view report, DriveAddress address) {
    std::string drive;
    const auto isMeant = [&] {
        return NumberOf("Enclosure No.", drive) == address.enclosure &&
               NumberOf("Slot No.", drive) == address.slot;
    };
    while (!report.empty()) {
        const std::string_view line = TakeLine(report);
        if (IsDriveHeader(line)) {
            if (isMeant()) {
                return drive;
            }
            drive = line;
        } else if (!drive.empty()) {
            drive += line;
        }
    }
    return isMeant() ? std::optional(drive) : std::nullopt;
}

}  // namespace vdksim
