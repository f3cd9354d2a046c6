#include "Movement.h"

#include "basics/Words.h"
#include "inventory/Server.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

namespace inventory {
namespace {

// The last words of keys: "Drive Temperature" is a temperature.
constexpr std::string_view kMovingKeys[] = {"Temperature",
                                            "Voltage",
                                            "Current",
                                            "Relative State of Charge",
                                            "Absolute State of Charge",
                                            "Capacitance",
                                            "Remaining Capacity",
                                            "Power-On Time"};

constexpr std::string_view kTable = "SMART Detail(";

// Attributes of drives with numbered ones, in small letters and with blanks between the words. Rates of
// errors are none of them, though they move on many a drive: they are also the first to tell of a bad one.
constexpr std::string_view kMovingAttributes[] = {"power on hours",
                                                  "power on hours count",
                                                  "power on time",
                                                  "power on time count",
                                                  "power on minutes",
                                                  "head flying hours",
                                                  "loaded hours",
                                                  "drive temperature",
                                                  "temperature",
                                                  "temperature celsius",
                                                  "hda temperature",
                                                  "airflow temperature",
                                                  "airflow temperature cel",
                                                  "total lbas written",
                                                  "total lbas read",
                                                  "host writes",
                                                  "host reads",
                                                  "total host writes",
                                                  "total host reads"};
constexpr std::string_view kMovingColumns[] = {"Value", "Worst", "Raw Data"};

// Columns of drives with a row for reading, one for writing and so on. Errors that took a second try, or
// could not be corrected, have columns of their own.
constexpr std::string_view kCountOfData = "Gigabytes";
constexpr std::string_view kCountsOfCorrections[] = {"Fast", "Corrected", "Algorithm"};
constexpr std::string_view kRowOfOtherErrors = "Non-medium error";

template <typename Names>
bool IsOneOf(std::string_view name, const Names& names) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

bool IsMovingKey(std::string_view name) {
    return std::any_of(std::begin(kMovingKeys), std::end(kMovingKeys), [&](std::string_view key) {
        return name.ends_with(key) &&
               (name.size() == key.size() || name[name.size() - key.size() - 1] == ' ');
    });
}

std::string InPlainWords(std::string_view attribute) {
    std::string words = basics::InLowerCase(basics::Trimmed(attribute));
    std::replace_if(
        words.begin(), words.end(), [](char character) { return character == '-' || character == '_'; }, ' ');
    return words;
}

bool IsMovingCell(const Item& row, std::string_view column) {
    const std::string attribute = ValueOf(row, "Attribute");
    if (IsOneOf(column, kMovingColumns)) {
        return IsOneOf(InPlainWords(attribute), kMovingAttributes);
    }
    return column == kCountOfData ||
           (IsOneOf(column, kCountsOfCorrections) && !attribute.ends_with(kRowOfOtherErrors));
}

/// "31 C", "-12 mA", "000000000036", "00A3".
bool IsMeasured(const Item& item) {
    const std::string_view text = basics::Trimmed(item.value);
    if (item.isPlaceholder || text.empty()) {
        return false;
    }
    const bool isSigned = text.size() > 1 && (text.front() == '-' || text.front() == '+');
    return basics::IsDigit(text[isSigned ? 1 : 0]) ||
           text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

}  // namespace

bool IsMovement(const Item& parent, const Item& before, const Item& after) {
    if (!IsMeasured(before) || !IsMeasured(after)) {
        return false;
    }
    return parent.name.starts_with(kTable) ? IsMovingCell(parent, after.name) : IsMovingKey(after.name);
}

}  // namespace inventory
