#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

enum class Kind {
    Controllers,     ///< of all controllers, one beside the other
    LogicalDrives,   ///< groups of four drives, each with a logical drive
    Drives,          ///< as newer tools give them, without SMART data
    DrivesOf16Keys,  ///< the same with two more lines for each
    DrivesAndSmart,  ///< as older tools do, whose SMART data are passed over
    SmartTable,      ///< one drive, with a table so long as if it were those of all
};

/// A report in a file, made up once and kept until the process ends.
struct Report {
    std::string path;
    std::size_t bytes = 0;
    std::size_t lines = 0;
};

/// The report of so many drives, or controllers. Not for several threads; throws what files throw.
[[nodiscard]] const Report& ReportOf(Kind kind, std::uint32_t count);

}  // namespace bench
