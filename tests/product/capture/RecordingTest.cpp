#include "Recording.h"

#include "recorder/RunFile.h"
#include "test_support/Command.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <sstream>

namespace capture::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;

struct ToolRun {
    std::string arguments;
    std::string output;
    int status = 0;
};
using Call = std::vector<ToolRun>;

// What is recorded of some calls, a line for each command.
std::string Recorded(const std::vector<Call>& calls, const std::string& note = "") {
    // In a process of its own: a recording changes the environment.
    return InChild([&] {
        const TempFolder folder;
        const TempFolder outputs;
        Recording recording(folder.Path());
        for (const Call& call : calls) {
            for (const ToolRun& run : call) {
                WriteFile(outputs / "out", run.output);
                const int file = ::open((outputs / "out").c_str(), O_RDONLY);
                EXPECT_EQ(recorder::StoreRun(folder.Path(), "/x/vdkcli " + run.arguments, run.status, file),
                          "");
                ::close(file);
            }
            if (!note.empty()) {
                recorder::StoreNote(folder.Path(), note);
            }
            recording.Take();
        }
        std::ostringstream text;
        for (const RecordedCommand& command : recording.Commands()) {
            text << command.arguments << "=" << command.output << (command.isChanged ? " changed" : "");
            for (const int status : command.statuses) {
                text << " " << status;
            }
            text << "\n";
        }
        for (const std::string& each : recording.Notes()) {
            text << each << "\n";
        }
        for (const std::string& name : folder.Names()) {
            text << "left: " << name << "\n";
        }
        return text.str();
    });
}

TEST(Recording, HasEachCommandOnceInTheOrderOfTheCalls) {
    EXPECT_EQ(Recorded({{{"-v", "4.1"}, {"-b", "B"}, {"-a", "A"}}, {{"-c", "C"}, {"-b", "B"}}}),
              "-v=4.1 0\n-b=B 0\n-a=A 0\n-c=C 0\n");
}

TEST(Recording, HasTheTextOfTheLastGoodRunAndTheEndsOfTheFirstCall) {
    EXPECT_EQ(Recorded({{{"-v", "busy", 256}, {"-v", "busy", 256}, {"-v", "good"}}, {{"-v", "good"}}}),
              "-v=good 256 256 0\n");
    EXPECT_EQ(Recorded({{{"-v", "one", 256}, {"-v", "two", 512}}}), "-v=two 256 512\n");
    EXPECT_EQ(Recorded({{{"-v", "good"}, {"-v", "bad", SIGKILL}}}), "-v=good 0 9\n");
}

TEST(Recording, SaysWhichCommandsAreAnsweredDifferently) {
    EXPECT_EQ(Recorded({{{"-v", "one"}, {"-w", "x"}}, {{"-v", "two"}, {"-w", "x"}}}),
              "-v=two changed 0\n-w=x 0\n");
    EXPECT_EQ(Recorded({{{"-v", "one"}, {"-v", "two"}}}), "-v=two changed 0 0\n");
    EXPECT_EQ(Recorded({{{"-v", "good"}}, {{"-v", "bad", 256}}}), "-v=good changed 0\n");
    EXPECT_EQ(Recorded({{{"-v", "bad", 256}}, {{"-v", "good"}}}), "-v=good changed 256\n");
    EXPECT_EQ(Recorded({{{"-v", "bad", 256}}, {{"-v", "worse", 256}}}), "-v=worse changed 256\n");
}

TEST(Recording, TellsWhatCouldNotBeRecorded) {
    EXPECT_EQ(Recorded({{{"-v", "4.1"}}}, "-w is not recorded: why"), "-v=4.1 0\n-w is not recorded: why\n");
}

}  // namespace
}  // namespace capture::test
