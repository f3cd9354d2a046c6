// A server's health in words and figures.

#include "inventory/Health.h"

#include <algorithm>

namespace inventory {
namespace {

std::string Number(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string CountsByLevel(const Health& health) {
    std::string text;
    for (const Level level : {Level::Critical, Level::Warning, Level::Unknown}) {
        if (const std::size_t count = CountOf(health, level); count > 0) {
            text += (text.empty() ? "" : ", ") + std::to_string(count) + " ";
            text += level == Level::Critical ? "critical" : level == Level::Unknown ? "unknown" : "warning";
            text += level == Level::Warning && count > 1 ? "s" : "";
        }
    }
    return text;
}

}  // namespace

std::string Describe(const Counts& counts) {
    if (counts.controllers == 0 && counts.groups == 0 && counts.drives == 0) {
        return "no controller";
    }
    std::string text = counts.controllers == 0 ? "" : Number(counts.controllers, "controller") + ", ";
    if (counts.groups > 0) {
        text += Number(counts.groups, "group") + ", " + Number(counts.logicalDrives, "logical drive") + ", ";
    }
    return text + (counts.drives == 0 ? "no drive" : Number(counts.drives, "drive"));
}

std::string Headline(const Health& health) {
    const std::string counts = Describe(health.counts);
    const std::string accepted =
        CountAccepted(health) == 0 ? "" : ", " + Number(CountAccepted(health), "finding") + " accepted";
    if (const std::string levels = CountsByLevel(health); !levels.empty()) {
        return levels + " in " + counts + accepted;
    }
    if (health.level != Level::Ok) {
        return counts + ", nothing to judge";
    }
    return counts + (accepted.empty() ? ", all well" : ", all else well" + accepted);
}

std::size_t CountOf(const Health& health, Level level) {
    return static_cast<std::size_t>(
        std::count_if(health.findings.begin(), health.findings.end(),
                      [level](const Finding& each) { return !each.isAccepted && each.level == level; }));
}

std::size_t CountAccepted(const Health& health) {
    return static_cast<std::size_t>(std::count_if(health.findings.begin(), health.findings.end(),
                                                  [](const Finding& each) { return each.isAccepted; }));
}

}  // namespace inventory
