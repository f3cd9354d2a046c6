#include "Measurements.h"

#include "basics/Words.h"
#include "history/History.h"
#include "inventory/Measure.h"
#include "inventory/Smart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace history {
namespace {

using Take = std::function<void(const std::string&, double)>;

// No name in a report is as long.
constexpr std::size_t kLongestName = 120;

void TakeIf(const std::string& name, std::optional<double> number, const Take& take) {
    if (number && std::isfinite(*number) && name.size() <= kLongestName) {
        take(name, *number);
    }
}

std::optional<double> CountIn(const std::string& text) {
    const std::optional<std::uint64_t> count = inventory::CountFrom(text);
    return count ? std::optional(static_cast<double>(*count)) : std::nullopt;
}

std::optional<double> NumberIn(const std::string& text) {
    const std::optional<inventory::Measure> measure = inventory::MeasureFrom(text);
    return measure ? std::optional(measure->number) : std::nullopt;
}

bool IsAttribute(std::string_view column) {
    return basics::IsSameWord(column, "Attribute");
}

bool TellsNothing(std::string_view column) {
    constexpr std::array<std::string_view, 2> kOthers = {"ID", "Worst"};
    return IsAttribute(column) || inventory::IsThreshold(column) ||
           std::any_of(kOthers.begin(), kOthers.end(),
                       [column](std::string_view other) { return basics::IsSameWord(column, other); });
}

void MeasureSmart(const inventory::Smart& smart, const Take& take) {
    for (const auto& [key, value] : smart.keys) {
        TakeIf("SMART " + key, NumberIn(value), take);
    }
    const auto attribute = std::find_if(smart.columns.begin(), smart.columns.end(), IsAttribute);
    if (attribute == smart.columns.end()) {
        return;
    }
    for (const std::vector<std::string>& row : smart.rows) {
        const std::string& name = row[static_cast<std::size_t>(attribute - smart.columns.begin())];
        for (std::size_t column = 0; !name.empty() && column < row.size(); ++column) {
            if (!TellsNothing(smart.columns[column])) {
                TakeIf("SMART " + name + ", " + smart.columns[column], NumberIn(row[column]), take);
            }
        }
    }
}

}  // namespace

void MeasureDrive(const inventory::Drive& drive, const Take& take) {
    TakeIf(kTemperature, inventory::CelsiusFrom(drive.temperature), take);
    TakeIf(kMediaErrors, CountIn(drive.mediaErrors), take);
    TakeIf(kOtherErrors, CountIn(drive.otherErrors), take);
    TakeIf(kPredictedFailures, CountIn(drive.predictiveFailures), take);
    if (drive.smart != nullptr) {
        MeasureSmart(SmartOf(drive), take);
    }
}

}  // namespace history
