#include "ReportShape.h"

#include <cstdlib>
#include <sstream>

namespace vdksim::test {

namespace {

constexpr std::string_view kBlank = " \t";

std::string Trim(std::string_view text) {
    const auto first = text.find_first_not_of(kBlank);
    if (first == std::string_view::npos) {
        return {};
    }
    text.remove_prefix(first);
    return std::string(text.substr(0, text.find_last_not_of(" \t\r\n") + 1));
}

std::size_t CountWords(const std::string& text) {
    std::istringstream in(text);
    std::size_t count = 0;
    for (std::string word; in >> word;) {
        ++count;
    }
    return count;
}

// "Raw Data" is one column.
std::size_t SataColumns(const std::string& header) {
    return CountWords(header) - (header.find("Raw Data ") != std::string::npos ? 1 : 0);
}

std::string SataRowFault(const std::string& row, std::size_t columns) {
    const auto name = row.find_first_not_of(kBlank, row.find_first_of(kBlank));
    if (name == std::string::npos || row.size() <= name + 40 || row[name + 40] != ' ') {
        return "no name of 40 characters";
    }
    return CountWords(row.substr(name + 40)) + 2 == columns ? "" : "not as many cells as the header";
}

}  // namespace

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    std::istringstream in{std::string(text)};
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::map<long, std::string> DriveHeaders(const std::string& driveReport) {
    std::map<long, std::string> headers;
    for (const std::string& line : LinesOf(driveReport)) {
        const auto bracket = line.find('(');
        if (line.starts_with("PD") && bracket != std::string::npos && line[2] >= '0' && line[2] <= '9') {
            headers[std::atol(line.c_str() + 2)] = line.substr(bracket + 1, line.find(')') - bracket - 1);
        }
    }
    return headers;
}

std::map<long, std::string> GroupOfDrive(const std::string& logicalDriveReport) {
    std::map<long, std::string> groups;
    std::string group;
    for (const std::string& raw : LinesOf(logicalDriveReport)) {
        const std::string line = Trim(raw);
        if (line.starts_with("RG No.") && line.find(':') != std::string::npos) {
            group = Trim(line.substr(line.find(':') + 1));
        } else if (line.starts_with(">>PD") && line.find('(') != std::string::npos && !group.empty()) {
            groups.emplace(std::atol(line.c_str() + 4), group);
        }
    }
    return groups;
}

std::string TableFault(const std::string& driveReport, std::size_t& rows) {
    rows = 0;
    std::string header;
    bool inSmart = false;
    bool underHeader = false;
    for (const std::string& raw : LinesOf(driveReport)) {
        const std::string line = Trim(raw);
        if (line.starts_with("### ")) {
            inSmart = line.starts_with("### SMART Information ###");
        } else if (inSmart && header.empty()) {
            header = line.find("Attribute") != std::string::npos ? line : "";
            underHeader = !header.empty();
        } else if (underHeader) {
            underHeader = false;
        } else if (!header.empty() && !line.empty() && !line.starts_with("[Head")) {
            ++rows;
            const bool isSata = header.starts_with("ID");
            const auto lastColumn = header.find_last_of(kBlank) + 1;
            const std::string fault = isSata ? SataRowFault(line, SataColumns(header))
                                             : std::string(line.size() < lastColumn ? "too short" : "");
            if (!fault.empty()) {
                return fault + ": " + line;
            }
        }
    }
    return "";
}

}  // namespace vdksim::test
