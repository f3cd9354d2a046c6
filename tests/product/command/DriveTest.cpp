// One drive after the other of the shipped servers, through the command.

#include "test_support/Command.h"
#include "test_support/XmlLint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <tuple>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;

using Address = std::tuple<int, int, int>;  // controller, enclosure, drive

Ended ReadDrive(const std::string& installRoot, const std::string& scenario, const Address& address) {
    const auto [controller, enclosure, drive] = address;
    return RunCommand({"--install-dir", installRoot, "--scenario", scenario, "get-pd-info",
                       std::to_string(controller), std::to_string(enclosure), std::to_string(drive)});
}

// The drives that a scenario has reports of, with these reports.
std::map<Address, fs::path> DrivesOf(const std::string& scenario) {
    std::map<Address, fs::path> drives;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(COMMAND_TEST_SCENARIOS) / scenario)) {
        int enclosure = 0;
        int drive = 0;
        int controller = 0;
        const std::string name = entry.path().filename();
        if (entry.path().extension() == ".txt" &&
            std::sscanf(name.c_str(), "pdinfo_pd%d.%d_a%d", &enclosure, &drive, &controller) == 3) {
            drives[{controller, enclosure, drive}] = entry.path();
        }
    }
    return drives;
}

std::string CountOf(const std::string& document, const std::string& name) {
    return testsupport::EvaluateXPath(document, "count(//Item[@Name='" + name + "'])");
}

TEST(Drive, OfTheLargeServerIsReadWithItsTable) {
    const InstallRoot root;
    const auto drives = DrivesOf("large");
    ASSERT_GT(drives.size(), 20U);
    int withoutTable = 0;
    for (const auto& [address, report] : drives) {
        const Ended ended = ReadDrive(root.Path(), "large", address);
        EXPECT_EQ(ended.ExitStatus(), 0) << report;
        EXPECT_EQ(ended.err, "");
        EXPECT_EQ(testsupport::ValidateAgainstSchema(ended.out), "") << report;
        EXPECT_EQ(CountOf(ended.out, "Physical Drive Information"), "1") << report;
        const bool hasRows =
            testsupport::EvaluateXPath(ended.out,
                                       "count(//Item[starts-with(@Name,'SMART Detail')]/Item) > 0") == "true";
        withoutTable += hasRows ? 0 : 1;
    }
    EXPECT_EQ(withoutTable, 2);  // One without a table, one that is neither SAS nor SATA.
    EXPECT_TRUE(root.IsUntouched());
}

TEST(Drive, OfTheOldServerIsReadOrRefusedAsItsTableSays) {
    const InstallRoot root;
    const std::map<Address, int> statuses = {
        {{0, 1, 0}, 0}, {{0, 1, 1}, 1}, {{0, 1, 2}, 3}, {{0, 1, 3}, 0}, {{0, 1, 4}, 0}};
    ASSERT_EQ(DrivesOf("old").size(), statuses.size());
    for (const auto& [address, status] : statuses) {
        const Ended ended = ReadDrive(root.Path(), "old", address);
        EXPECT_EQ(ended.ExitStatus(), status) << std::get<2>(address);
        EXPECT_EQ(ended.out.empty(), status != 0);
        if (status == 0) {
            EXPECT_EQ(testsupport::ValidateAgainstSchema(ended.out), "");
        }
    }
    EXPECT_TRUE(root.IsUntouched());
}

TEST(Drive, ThatDoesNotExistIsRefusedByTheTool) {
    const InstallRoot root;
    const Ended ended = ReadDrive(root.Path(), "large", {0, 99, 99});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, testing::HasSubstr("(01)"));
    EXPECT_THAT(ended.err, testing::HasSubstr("check that there is such a drive"));
}

}  // namespace
}  // namespace command::test
