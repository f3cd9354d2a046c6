// The walker that checks a service against the schemas of the standards bodies lies beside the project; it is
// used where it is. ZORBALT_REDFISH_CHECKER names another place; with ZORBALT_REDFISH_ALL=1 every shipped
// scenario that does not change with time is walked, which takes minutes (one of them has 4,096 drives).

#include "RunningServer.h"
#include "Scenarios.h"
#include "test_support/TempFolder.h"

#include <algorithm>
#include <filesystem>
#include <iostream>

namespace redfish::test {
namespace {

namespace fs = std::filesystem;

std::string CheckerPath() {
    const char* const elsewhere = std::getenv("ZORBALT_REDFISH_CHECKER");
    return elsewhere == nullptr ? REDFISH_TEST_CHECKER : elsewhere;
}

/// Those that tell something each of its own, in a few seconds.
std::vector<std::string> ChosenScenarios() {
    return {"awkward",
            "empty",
            "large",
            "old",
            "small",
            "well",
            "half-told/told-twice",
            "half-told/lost-drives",
            "half-told/bare-controller",
            "half-told/other-language",
            "levels/raid60-two-gone",
            "levels/raid1-dropped-out"};
}

/// Without those that are about tools that fail: their documents are that of another one, or there is none.
std::vector<std::string> SteadyScenarios() {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(REDFISH_TEST_SCENARIOS)) {
        const fs::path folder = entry.path().parent_path();
        const std::string name = fs::relative(folder, REDFISH_TEST_SCENARIOS).string();
        if (entry.path().filename() == "README.md" && !fs::exists(folder / "timeline") &&
            !name.starts_with("faults") && name != "half-failed") {
            names.push_back(name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(TheWalker, FindsNothingInAnyScenario) {
    if (!fs::exists(CheckerPath())) {
        GTEST_SKIP() << "the walker is not there: " << CheckerPath();
    }
    const std::vector<std::string> names =
        std::getenv("ZORBALT_REDFISH_ALL") == nullptr ? ChosenScenarios() : SteadyScenarios();
    const testsupport::TempFolder folder;
    std::vector<std::string> documents = {"-"};  // a server that has not answered yet
    for (std::size_t each = 0; each < names.size(); ++each) {
        const std::string xml = DocumentOf(names[each]);
        EXPECT_FALSE(xml.empty()) << names[each];
        folder.Write(std::to_string(each), xml);
        documents.push_back(folder / std::to_string(each));
    }
    const RunningServer server(documents, documents.size());
    for (std::size_t each = 0; each < documents.size(); ++each) {
        const testsupport::Ended ended =
            testsupport::Command{.words = {"-W", "ignore", CheckerPath(), server.Url(each), "--least", "15"},
                                 .program = REDFISH_TEST_PYTHON}
                .Run();
        const std::string name = each == 0 ? "nothing yet" : names[each - 1];
        EXPECT_EQ(ended.ExitStatus(), 0) << name << '\n' << ended.out << ended.err;
        EXPECT_NE(ended.out.find(" 0 findings"), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace redfish::test
