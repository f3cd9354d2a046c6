#pragma once

#include "inventory/Server.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace inventory {

/// The SMART data of a drive, laid out as its report has it: key lines, then a table.
///
///     SMART Status : OK
///     Temperature  : 31 C
///     ID  Attribute                 Value  Worst  Threshold  Raw Data
///      5  Reallocated Sector Count    100    100         36         0
struct Smart {
    std::vector<std::pair<std::string, std::string>> keys;  ///< an empty value was not told
    std::string tableName;                                  ///< "SMART Detail(SATA)"; empty without a table
    std::vector<std::string> columns;                       ///< of the widest row
    std::vector<std::vector<std::string>> rows;  ///< cells by column; those that a row lacks are empty
};

/// `drive.smart` must be there.
[[nodiscard]] Smart SmartOf(const Drive& drive);

/// Whether the cells below that heading are thresholds: "Threshold", "Thresh".
[[nodiscard]] bool IsThreshold(std::string_view column);

/// The rows of the table that announce a failure, in words: "Reallocated Sector Count: 12, threshold 36",
/// where the value has come down to its threshold, or "Spin Retry Count: FAILING_NOW". A threshold of 0 is
/// none.
[[nodiscard]] std::vector<std::string> FailingRowsOf(const Smart& smart);

}  // namespace inventory
