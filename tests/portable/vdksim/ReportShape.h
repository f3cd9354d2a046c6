#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

// What a reader of the reports needs of them, tested without a reader.
namespace vdksim::test {

[[nodiscard]] std::vector<std::string> LinesOf(std::string_view text);

// The drive headers, number by number: {3, "LD1"} for "PD3(LD1)".
[[nodiscard]] std::map<long, std::string> DriveHeaders(const std::string& driveReport);

// The group of every member drive: {3, "RG1"} for ">>PD3(ONLINE)" behind "RG No. : RG1".
[[nodiscard]] std::map<long, std::string> GroupOfDrive(const std::string& logicalDriveReport);

// What is wrong with the attribute table behind the SMART title, "" when nothing is: every row of a SATA
// table must have as many cells as the header, its second one 40 characters wide, and every row of a SAS
// table must reach the last column. rows counts the attributes.
[[nodiscard]] std::string TableFault(const std::string& driveReport, std::size_t& rows);

}  // namespace vdksim::test
