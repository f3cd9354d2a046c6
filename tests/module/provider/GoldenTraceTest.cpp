#include "CallBench.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using testsupport::CallTest;

struct GoldenCall {
    std::string name;
    std::string folder;
    std::string method;
    DWORD returnValue;
};

class GoldenTraceTest : public CallTest, public ::testing::WithParamInterface<GoldenCall> {
  protected:
    [[nodiscard]] static std::filesystem::path Folder() {
        return std::filesystem::path(TEST_GOLDEN_TRACES) / GetParam().folder;
    }

    void AnswerAsTheFolderSays() {
        for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
            if (entry.path().filename() != "trace.txt") {
                m_Tool.Answer(entry.path().filename(), testsupport::ReadFile(entry.path()));
            }
        }
    }
};

TEST_P(GoldenTraceTest, TheWholeTraceIsAsRecorded) {
    AnswerAsTheFolderSays();
    const std::map<std::string, std::string> drive = {{"CtrlNo", "0"}, {"EnclNo", "252"}, {"PDNo", "3"}};
    EXPECT_EQ(GetParam().method == "GetInfo" ? Call("GetInfo") : Call("GetPDInfo", drive), 0U);
    EXPECT_EQ(ReturnValue(), GetParam().returnValue);
    std::string trace;
    for (const std::string& line : Trace()) {
        trace += line + "\n";
    }
    EXPECT_EQ(trace, testsupport::ReadFile(Folder() / "trace.txt"));
}

INSTANTIATE_TEST_SUITE_P(Calls, GoldenTraceTest,
                         ::testing::Values(GoldenCall{"SuccessOnTwoControllers", "two-controllers", "GetInfo",
                                                      0},
                                           GoldenCall{"FailureInTheSecondLogicalDriveReport", "second-fails",
                                                      "GetInfo", 0x80000001},
                                           GoldenCall{"OneSasDrive", "sas-drive", "GetPDInfo", 0},
                                           GoldenCall{"OneSataDrive", "sata-drive", "GetPDInfo", 0}),
                         [](const auto& call) { return call.param.name; });

}  // namespace
