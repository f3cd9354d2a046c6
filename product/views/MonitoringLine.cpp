#include "basics/Text.h"
#include "views/Views.h"

#include <algorithm>

namespace views {
namespace {

constexpr std::size_t kMostFindings = 5;
constexpr std::size_t kLongest =
    200;  // of a finding; many systems keep no more than a few kilobytes of a line

// A bar would begin the figures.
std::string Told(const inventory::Finding& finding) {
    std::string text = basics::Shortened(basics::Printable(Describe(finding)), kLongest);
    std::replace(text.begin(), text.end(), '|', '/');
    return text;
}

std::string Figures(const inventory::Health& health) {
    const auto figure = [](const char* name, std::size_t count) {
        return std::string(" ").append(name).append("=").append(std::to_string(count));
    };
    return " |" + figure("controllers", health.counts.controllers) + figure("groups", health.counts.groups) +
           figure("logical_drives", health.counts.logicalDrives) + figure("drives", health.counts.drives) +
           figure("critical", CountOf(health, inventory::Level::Critical)) +
           figure("warning", CountOf(health, inventory::Level::Warning)) +
           figure("unknown", CountOf(health, inventory::Level::Unknown)) +
           figure("accepted", CountAccepted(health));
}

}  // namespace

std::string MonitoringLine(const inventory::Health& health, bool isVerbose) {
    std::string text = "RAID " + std::string(NameOf(health.level)) + " - " + Headline(health);
    const std::size_t counted = health.findings.size() - CountAccepted(health);
    const std::size_t told = isVerbose ? 0 : std::min(counted, kMostFindings);
    for (std::size_t number = 0; number < told; ++number) {
        text += "; " + Told(health.findings[number]);
    }
    if (!isVerbose && told < counted) {
        text += "; and " + std::to_string(counted - told) + " more";
    }
    text += Figures(health) + '\n';
    for (const inventory::Finding& finding : health.findings) {
        text += isVerbose ? std::string(NameOfLevel(finding)) + ": " + Told(finding) + '\n' : "";
    }
    return text;
}

}  // namespace views
