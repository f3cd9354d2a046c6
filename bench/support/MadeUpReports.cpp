#include "MadeUpReports.h"

#include "test_support/TempFolder.h"
#include "vdksim/MadeUpServer.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

namespace bench {
namespace {

constexpr std::uint32_t kRowsOfDrive = 6;

void WriteSmartTable(std::ostream& out, const vdksim::MadeUpServer& server, std::uint32_t drives) {
    server.WriteDrive(out, 0, 0);
    for (std::uint32_t row = kRowsOfDrive; row < kRowsOfDrive * drives; ++row) {
        out << "Read        835          12           0            57535        1\n";
    }
}

void WriteDrivesOf16Keys(std::ostream& out, const vdksim::MadeUpServer& server) {
    std::stringstream drives;
    server.WriteDrives(drives, 0, false);
    for (std::string line; std::getline(drives, line);) {
        out << line << '\n';
        if (line.starts_with(" Media Error Count")) {
            out << " Other Error Count            : 0\n"
                   " Predictive Failure Count     : 0\n";
        }
    }
}

void Write(std::ostream& out, Kind kind, std::uint32_t count) {
    const vdksim::MadeUpServer server({.version = "4.1",
                                       .controllers = kind == Kind::Controllers ? count : 1,
                                       .drives = kind == Kind::Controllers ? 1 : count});
    switch (kind) {
        case Kind::Controllers:
            return server.WriteAllControllers(out);
        case Kind::LogicalDrives:
            return server.WriteLogicalDrives(out, 0);
        case Kind::Drives:
            return server.WriteDrives(out, 0, false);
        case Kind::DrivesOf16Keys:
            return WriteDrivesOf16Keys(out, server);
        case Kind::DrivesAndSmart:
            return server.WriteDrives(out, 0, true);
        case Kind::SmartTable:
            return WriteSmartTable(out, server, count);
    }
}

void CountLines(Report& report) {
    std::ifstream file(report.path);
    for (std::string line; std::getline(file, line); ++report.lines) {
        report.bytes += line.size() + 1;
    }
}

}  // namespace

const Report& ReportOf(Kind kind, std::uint32_t count) {
    static const testsupport::TempFolder folder;
    static std::map<std::pair<Kind, std::uint32_t>, Report> reports;
    const auto [place, isNew] = reports.try_emplace({kind, count});
    Report& report = place->second;
    if (isNew) {
        report.path =
            folder / (std::to_string(static_cast<int>(kind)) + "-" + std::to_string(count) + ".txt");
        std::ofstream out(report.path);
        Write(out, kind, count);
        out.close();
        if (out.fail()) {
            throw std::runtime_error("the report " + report.path + " cannot be written");
        }
        CountLines(report);
    }
    return report;
}

}  // namespace bench
