#include "vdksim/MadeUpServer.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "ReportShape.h"

namespace vdksim {

namespace {

using test::LinesOf;

MadeUpServer Server(std::uint32_t drives) {
    MadeUpServer::Shape shape;
    shape.controllers = 3;
    shape.drives = drives;
    return MadeUpServer(shape);
}

template <typename Operation>
std::string Written(Operation write) {
    std::ostringstream out;
    write(out);
    return out.str();
}

std::string Drives(const MadeUpServer& server, bool withSmart) {
    return Written([&](std::ostream& out) { server.WriteDrives(out, 0, withSmart); });
}

std::string LogicalDrives(const MadeUpServer& server) {
    return Written([&](std::ostream& out) { server.WriteLogicalDrives(out, 0); });
}

TEST(MadeUpServerTest, TheSameServerWritesTheSameReports) {
    EXPECT_EQ(Drives(Server(300), true), Drives(Server(300), true));
    EXPECT_EQ(LogicalDrives(Server(300)), LogicalDrives(Server(300)));
}

TEST(MadeUpServerTest, EveryDriveHasOneHeader) {
    for (const std::uint32_t drives : {0U, 1U, 4U, 5U, 27U, 31U, 32U, 33U, 500U}) {
        EXPECT_EQ(test::DriveHeaders(Drives(Server(drives), false)).size(), drives);
    }
}

TEST(MadeUpServerTest, ExactlyTheDrivesOfLogicalDrivesHaveAGroup) {
    for (const std::uint32_t drives : {0U, 1U, 6U, 30U, 33U, 500U}) {
        const MadeUpServer server = Server(drives);
        const auto groups = test::GroupOfDrive(LogicalDrives(server));
        for (const auto& [number, membership] : test::DriveHeaders(Drives(server, false))) {
            EXPECT_EQ(groups.contains(number), membership.starts_with("LD")) << number << ' ' << membership;
        }
        EXPECT_LE(groups.size(), drives);
    }
}

TEST(MadeUpServerTest, ThereAreGroupsCacheGroupsSparesAndEveryStatus) {
    const MadeUpServer server = Server(2000);
    std::set<std::string> kinds;
    for (const auto& [number, group] : test::GroupOfDrive(LogicalDrives(server))) {
        kinds.insert(group.substr(0, group.find_first_of("0123456789")));
    }
    EXPECT_EQ(kinds, (std::set<std::string>{"RG", "scRG"}));

    std::set<std::string> statuses;
    const std::string report = Drives(server, false);
    for (const std::string& line : LinesOf(report)) {
        if (line.starts_with(" PD Status")) {
            statuses.insert(line.substr(line.find(": ") + 2));
        }
    }
    EXPECT_EQ(statuses, (std::set<std::string>{"ONLINE", "COPYBACK", "Unconfig GOOD", "HOT SPARE", "OFFLINE",
                                               "Unconfig BAD", "FAILED", "REBUILD", "Diagnosing"}));
    for (const char* spare : {"(GHS)", "(DHS RG0)", "(RLD)", "(Unused)"}) {
        EXPECT_NE(report.find(spare), std::string::npos) << spare;
    }
}

TEST(MadeUpServerTest, AGroupServedByACacheGroupNamesItInsteadOfAnAccessPolicy) {
    const std::string report = LogicalDrives(Server(64));
    const std::string first = report.substr(0, report.find("\nRG1("));
    EXPECT_NE(first.find("\n Associated CacheCade LD      : \n LD6(CACHE_6, 186 GB, OPTIMAL)\n\n"),
              std::string::npos);
    EXPECT_EQ(first.find("Access Policy"), std::string::npos);
    EXPECT_NE(report.find("\nscRG1("), std::string::npos);
    EXPECT_EQ(LogicalDrives(Server(24)).find("Associated"), std::string::npos);
}

TEST(MadeUpServerTest, EveryTableCanBeCutIntoItsColumns) {
    const MadeUpServer server = Server(128);
    std::set<std::size_t> counts;
    for (std::uint32_t drive = 0; drive < 128; ++drive) {
        std::size_t rows = 0;
        EXPECT_EQ(
            test::TableFault(Written([&](std::ostream& out) { server.WriteDrive(out, 0, drive); }), rows),
            "");
        counts.insert(rows);
    }
    EXPECT_EQ(counts, (std::set<std::size_t>{0, 6, 10}));  // no table, SAS, SATA
}

TEST(MadeUpServerTest, ADriveIsTheSameAloneAndAmongTheOthers) {
    const MadeUpServer server = Server(40);
    const std::string all = Drives(server, true);
    for (const std::uint32_t drive : {0U, 5U, 31U, 39U}) {
        std::string one = Written([&](std::ostream& out) { server.WriteDrive(out, 0, drive); });
        one.erase(0, one.find("PD"));
        EXPECT_NE(all.find(one), std::string::npos) << drive;
    }
}

TEST(MadeUpServerTest, WithoutSmartThereIsNoSmartSection) {
    EXPECT_NE(Drives(Server(40), true).find("### SMART Information ###"), std::string::npos);
    EXPECT_EQ(Drives(Server(40), false).find("SMART"), std::string::npos);
}

TEST(MadeUpServerTest, AddressesLeadBackToTheirDrives) {
    const MadeUpServer server = Server(1000);
    for (std::uint32_t drive = 0; drive < 1000; ++drive) {
        EXPECT_EQ(server.DriveAt(MadeUpServer::AddressOf(drive)), drive);
    }
    EXPECT_FALSE(server.DriveAt(MadeUpServer::AddressOf(1000)));
    EXPECT_FALSE(server.DriveAt({7, 0}));
    EXPECT_FALSE(server.DriveAt({8, 24}));
    EXPECT_FALSE(server.DriveAt({4294967295U, 0}));
}

TEST(MadeUpServerTest, AllControllersAreTheControllersOneAfterTheOther) {
    const MadeUpServer server = Server(1);
    std::string each;
    for (std::uint32_t controller = 0; controller < 3; ++controller) {
        each += Written([&](std::ostream& out) { server.WriteController(out, controller); });
    }
    EXPECT_EQ(Written([&](std::ostream& out) { server.WriteAllControllers(out); }), each);
}

TEST(MadeUpServerTest, AMillionDrivesStopAtOnceWhenNobodyTakesThem) {
    class Full final : public std::streambuf {
      public:
        std::streamsize offered = 0;

      protected:
        std::streamsize xsputn(const char*, std::streamsize count) override {
            offered += count;
            return 0;
        }
    } full;
    std::ostream out(&full);
    Server(1'000'000).WriteDrives(out, 0, true);
    EXPECT_TRUE(out.bad());
    EXPECT_LT(full.offered, 200'000);
}

}  // namespace

}  // namespace vdksim
