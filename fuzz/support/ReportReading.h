#pragma once

#include "Input.h"
#include "report/CMSRAID_InfoGetter.h"

#include <fstream>
#include <functional>
#include <memory>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace fuzzing {

/// Where a reader gets its report from: `File` is slower and just what it has in use, so the two must agree.
enum class Medium { Memory, File };

/// An open report.
class OpenReport final {
  public:
    OpenReport(std::string_view text, Medium medium);
    ~OpenReport();
    OpenReport(const OpenReport&) = delete;
    OpenReport& operator=(const OpenReport&) = delete;

    [[nodiscard]] std::ifstream& Stream() { return m_Stream; }

  private:
    std::unique_ptr<std::streambuf> m_Memory;
    std::ifstream m_Stream;
};

/// What became of the reports that one reader read in a row.
struct Reading {
    std::vector<ResultCode> results;
    bool endedByException = false;
    ItemList items;        ///< handed over; deleted when the document has been made
    std::string document;  ///< of all items

    friend bool operator==(const Reading&, const Reading&) = default;
};

/// Lets one reader object read the reports in a row, as its `GetInfo` does behind the tool run, and requires
/// after each that no item is lost. A report may begin with the directive 'r', the item from which on the
/// library refuses to make any. `before` prepares the reader for each.
void ReadInARow(
    CMSRAID_InfoGetter& reader, const Sections& reports, Medium medium, Reading& reading,
    const std::function<void()>& before = [] {});

/// A target's way to read: makes its reader, passes it on to `ReadInARow` and destroys it.
using ReadReports = std::function<void(const Sections& reports, Medium medium, Reading& reading)>;

/// Requires of the reports in one input what holds for every reader.
void CheckReports(std::string_view input, const ReadReports& read);

}  // namespace fuzzing
