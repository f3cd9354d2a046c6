#pragma once

#include "calls/Module.h"
#include "test_support/CountedSleep.h"
#include "test_support/ToolBench.h"
#include "test_support/TraceRecorder.h"

#include "qel/QelTypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

namespace testsupport {

/// All that can be told of one call from outside. What is not named is that of a call that went well.
struct Seen {
    DWORD status = 0;
    DWORD returnValue = 0;
    std::string reason = {};
    std::string document = {};
    std::vector<std::string> runs = {};
    std::size_t pauses = 0;
    std::vector<std::string> failures = {};   ///< trace lines, with FILE for the path of a result file
    std::vector<std::string> filesLeft = {};  ///< names, with NUMBER_ for their numbers
    std::ptrdiff_t descriptorsLeft = 0;
    std::size_t shellsLeft = 0;  ///< started by the module and not waited for until they ended
};

/// So that a difference is shown line by line.
[[nodiscard]] std::string Describe(const Seen& seen);

/// One command of the tool, and what a call tells when it fails.
struct ToolCommand {
    std::string name;
    std::string stem;  ///< of the scenario's files
    std::string arguments;
    std::string method;
    std::size_t place;                  ///< among the runs of the method
    std::vector<std::string> failures;  ///< of its reader, behind the tool runner's own
};

void PrintTo(const ToolCommand& command, std::ostream* out);

/// In the order of their runs, first those of GetInfo, then those of GetPDInfo.
[[nodiscard]] const std::vector<ToolCommand>& ToolCommands();
[[nodiscard]] const ToolCommand& CommandNamed(const std::string& name);

/// A document of these items, and the items of the well server's parts, as text.
[[nodiscard]] std::string Document(const std::string& items);
[[nodiscard]] std::string ControllerItems();
[[nodiscard]] std::string LogicalDriveItems();
[[nodiscard]] std::string DriveItems();

/// What a call of that method tells when nothing goes wrong.
[[nodiscard]] Seen Success(const std::string& method = "GetInfo");
[[nodiscard]] Seen Well(const ToolCommand& command);

/// What GetInfo tells when the controller's report is empty.
[[nodiscard]] Seen WithoutController();

/// What a call tells when a command works from its n-th run on, and when it fails for good.
[[nodiscard]] Seen SuccessAtRun(const ToolCommand& command, std::size_t run);
[[nodiscard]] Seen Failure(const ToolCommand& command);

/// The same when the tool has rejected the command: without another try.
[[nodiscard]] Seen Rejection(const ToolCommand& command);

/// The run succeeds, and its report cannot be read. A version is done without.
[[nodiscard]] Seen Unreadable(const ToolCommand& command);

/// Calls of the module's file through the host's loader, on a server that is well until a test says
/// otherwise. When a test has ended, the same provider must do its work as if nothing had happened.
class MisbehaviourTest : public ::testing::Test {
  protected:
    MisbehaviourTest();
    ~MisbehaviourTest() override;
    void TearDown() override;

    [[nodiscard]] Seen Call(const std::string& method = "GetInfo");
    [[nodiscard]] Seen Call(const ToolCommand& command) { return Call(command.method); }

    /// A command's text or instructions.
    void Print(const ToolCommand& command, const std::string& text);
    void Instruct(const ToolCommand& command, const std::string& instructions);

    void Expect(const Seen& seen, const Seen& expected) { EXPECT_EQ(Describe(seen), Describe(expected)); }

    /// The server as it is when it is well, and a text of it.
    void AnswerWell();
    [[nodiscard]] static const std::string& WellText(const ToolCommand& command);

    /// Ends every process that a run has left behind, and waits until none is left. Returns how many still
    /// ran.
    static std::size_t EndProcesses();

    InstallRoot m_Root;
    ToolBench m_Tool;
    TraceRecorder m_Trace{2};  // A report of a million lines has more than a million lines of operations.
    calls::Module m_Module;

  private:
    std::string m_LastMethod = "GetInfo";
};

}  // namespace testsupport
