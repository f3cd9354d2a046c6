#include "inventory/Smart.h"

#include "basics/Words.h"

#include <algorithm>
#include <string_view>

namespace inventory {
namespace {

constexpr std::string_view kTableName = "SMART Detail(";
constexpr std::string_view kAttribute = "Attribute";

// Columns keep the order of the first row that has them; a row may hold two of one name.
std::size_t ColumnFor(std::vector<std::string>& columns, const std::vector<bool>& isTaken,
                      const std::string& name) {
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (columns[column] == name && !(column < isTaken.size() && isTaken[column])) {
            return column;
        }
    }
    columns.push_back(name);
    return columns.size() - 1;
}

void AddRow(const Item& row, Smart& smart) {
    std::vector<std::string> cells;
    std::vector<bool> isTaken;
    for (const Item& cell : ChildrenOf(row)) {
        const std::size_t column = ColumnFor(smart.columns, isTaken, cell.name);
        cells.resize(std::max(cells.size(), column + 1));
        isTaken.resize(cells.size());
        cells[column] = cell.isPlaceholder ? "" : cell.value;
        isTaken[column] = true;
    }
    smart.rows.push_back(std::move(cells));
}

/// "" without a column of that name.
std::string_view CellOf(const Smart& smart, const std::vector<std::string>& row, std::string_view name) {
    for (std::size_t column = 0; column < row.size(); ++column) {
        if (basics::IsSameWord(smart.columns[column], name)) {
            return row[column];
        }
    }
    return "";
}

/// The cell that says so; the attribute's own name may hold the word, too.
std::string FailureIn(const Smart& smart, const std::vector<std::string>& row) {
    for (std::size_t column = 0; column < row.size(); ++column) {
        if (!basics::IsSameWord(smart.columns[column], kAttribute) &&
            basics::InLowerCase(row[column]).starts_with("fail")) {
            return row[column];
        }
    }
    return "";
}

std::string_view ThresholdIn(const Smart& smart, const std::vector<std::string>& row) {
    const auto column = std::find_if(smart.columns.begin(), smart.columns.end(), IsThreshold);
    return column == smart.columns.end()
               ? std::string_view()
               : std::string_view(row[static_cast<std::size_t>(column - smart.columns.begin())]);
}

/// "12, threshold 36"; empty for a row whose value is above it, or that has no such numbers.
std::string ShortfallIn(const Smart& smart, const std::vector<std::string>& row) {
    const auto value = basics::NumberFrom<unsigned>(CellOf(smart, row, "Value"));
    const auto threshold = basics::NumberFrom<unsigned>(ThresholdIn(smart, row));
    const bool isShort = value && threshold && *threshold > 0 && *value <= *threshold;
    return isShort ? std::to_string(*value) + ", threshold " + std::to_string(*threshold) : "";
}

}  // namespace

bool IsThreshold(std::string_view column) {
    return basics::IsSameWord(column, "Threshold") || basics::IsSameWord(column, "Thresh");
}

Smart SmartOf(const Drive& drive) {
    Smart smart;
    for (const Item& item : ChildrenOf(*drive.smart)) {
        if (!item.name.starts_with(kTableName)) {
            smart.keys.emplace_back(item.name, item.isPlaceholder ? "" : item.value);
        } else if (!item.isPlaceholder && !ChildrenOf(item).IsEmpty()) {
            smart.tableName = item.name;
            AddRow(item, smart);
        }
    }
    for (std::vector<std::string>& cells : smart.rows) {
        cells.resize(smart.columns.size());
    }
    return smart;
}

std::vector<std::string> FailingRowsOf(const Smart& smart) {
    std::vector<std::string> failing;
    for (const std::vector<std::string>& row : smart.rows) {
        std::string why = FailureIn(smart, row);
        why = why.empty() ? ShortfallIn(smart, row) : why;
        if (!why.empty()) {
            const std::string_view name = CellOf(smart, row, kAttribute);
            failing.push_back(std::string(name.empty() ? "row" : name) + ": " + why);
        }
    }
    return failing;
}

}  // namespace inventory
