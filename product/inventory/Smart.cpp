#include "inventory/Smart.h"

#include <algorithm>
#include <string_view>

namespace inventory {
namespace {

constexpr std::string_view kTableName = "SMART Detail(";

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

}  // namespace

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

}  // namespace inventory
