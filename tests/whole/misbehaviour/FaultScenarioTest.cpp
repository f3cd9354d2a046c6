// The faults that are shipped, played as a person would play them.
#include "HostedProvider.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

namespace {

namespace fs = std::filesystem;
using testsupport::Seen;

const fs::path kFaults = fs::path(TEST_SUPPORT_SCENARIOS) / "faults";

// What get-info makes of one. Where it fails, the command line of the last run tells the report.
struct Fault {
    const char* name;
    DWORD returnValue;
    const char* reason;
    std::size_t pauses;
    const char* lastRun;
    std::size_t shellsLeft = 0;
    std::size_t filesLeft = 0;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.name;
}

const std::vector<Fault> kPlayed = {
    {"marker", 0xA1, "01", 0, "-ctrlinfo -aAll"},
    {"killed", 0xA1, "01", 2, "-ldpdinfo -a0"},
    {"shell-killed", 0xA1, "01", 2, "-pdinfo -a0"},
    {"flaky", 0, "", 10, "-pdinfo -a0"},
    {"late", 0xA1, "01", 2, "-ldpdinfo -a0"},
    {"dead", 0xA1, "01", 4, "-ctrlinfo -aAll"},
    {"silent", 0, "", 0, "-ctrlinfo -aAll"},
    {"stopped", 0xA1, "01", 2, "-pdinfo -a0", 3},
    {"one-line", 0, "", 0, "-pdinfo -a0"},
    {"flood", 0, "", 0, "-pdinfo -a0"},
    {"held-open", 0, "", 0, "-pdinfo -a0"},
    {"still-writing", 0, "", 0, "-pdinfo -a0"},
    {"bare-version", 0x80000002, "", 0, "-v", 0, 1},
    {"truncated-title", 0x80000001, "06", 0, "-ctrlinfo -a0"},
    {"broken-header", 0x80000001, "06", 0, "-pdinfo -a0"},
};

// One takes seconds, the other is ended by whoever plays it.
const std::vector<std::string> kNotPlayed = {"endless", "slow"};

class FaultScenarioTest : public testsupport::MisbehaviourTest,
                          public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultScenarioTest, ComesToWhatItSays) {
    m_Tool.StartOver();
    for (const auto& entry : fs::directory_iterator(kFaults / GetParam().name)) {
        m_Tool.Answer(entry.path().filename(), testsupport::ReadFile(entry.path()));
    }
    const Seen seen = Call();
    EXPECT_EQ(seen.returnValue, GetParam().returnValue);
    EXPECT_EQ(seen.document.empty(), GetParam().returnValue != 0);
    EXPECT_EQ(seen.reason, GetParam().reason);
    EXPECT_EQ(seen.pauses, GetParam().pauses);
    EXPECT_EQ(seen.runs.back(), GetParam().lastRun);
    EXPECT_EQ(seen.filesLeft.size(), GetParam().filesLeft);
    EXPECT_EQ(seen.descriptorsLeft, 0);
    EXPECT_EQ(seen.shellsLeft, GetParam().shellsLeft);
}

INSTANTIATE_TEST_SUITE_P(Shipped, FaultScenarioTest, ::testing::ValuesIn(kPlayed), [](const auto& fault) {
    std::string name = fault.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST(FaultScenariosTest, NoneIsForgotten) {
    std::vector<std::string> names = kNotPlayed;
    for (const Fault& fault : kPlayed) {
        names.emplace_back(fault.name);
    }
    EXPECT_THAT(names, ::testing::UnorderedElementsAreArray(testsupport::TempFolder::NamesIn(kFaults)));
}

}  // namespace
