// What may become of the tool's own file while a call is under way.
#include "HostedProvider.h"

#include <functional>
#include <ostream>

namespace {

using testsupport::CommandNamed;
using testsupport::Failure;
using testsupport::Rejection;
using testsupport::Seen;
using testsupport::Success;
using testsupport::SuccessAtRun;
using testsupport::ToolCommand;
using testsupport::Well;

// What the tool does to itself, as `$0`, when it has counted the controllers; what comes of the controller's
// report behind it.
struct Change {
    const char* name;
    const char* script;
    std::function<Seen(const ToolCommand&)> expected;
};

void PrintTo(const Change& change, std::ostream* out) {
    *out << change.name;
}

// Asked about before every report, and not found. No run has made the result file that is then deleted.
Seen NotInstalled(const ToolCommand& command) {
    Seen seen = Rejection(command);
    seen.runs.pop_back();
    seen.failures.front() = "VDK is not installed.";
    seen.failures.insert(seen.failures.begin() + 2, "Failed to delete file(FILE).");
    return seen;
}

// Found, but not to be run: three tries of which the tool knows nothing.
Seen NotRun(const ToolCommand& command) {
    Seen seen = Failure(command);
    seen.runs = NotInstalled(command).runs;
    return seen;
}

// A program that says nothing, and succeeds with it.
Seen Silent(const ToolCommand& command) {
    Seen seen = Success();
    seen.runs = NotInstalled(command).runs;
    seen.document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID version=\"1\"/>\n";
    return seen;
}

class ToolFileTest : public testsupport::MisbehaviourTest {};

class ChangeTest : public ToolFileTest, public ::testing::WithParamInterface<Change> {};

TEST_P(ChangeTest, BehindTheCountOfControllers) {
    m_Tool.UseScript(std::string("simulate \"$@\"; [ \"$arguments\" = '-ctrlinfo -aAll' ] || exit 0\n") +
                     GetParam().script + '\n');
    Expect(Call(), GetParam().expected(CommandNamed("Controller")));
}

INSTANTIATE_TEST_SUITE_P(
    ToolFile, ChangeTest,
    ::testing::Values(Change{"ReplacedByANewVersion",
                             R"({ cat "$0"; echo true; } > "$0.new"; chmod +x "$0.new"; mv "$0.new" "$0")",
                             Well},
                      Change{"Removed", R"(rm "$0")", NotInstalled},
                      Change{"ReplacedByADirectory", R"(rm "$0"; mkdir "$0")", NotInstalled},
                      Change{"ReplacedByALinkToNothing", R"(ln -sf /nowhere "$0")", NotInstalled},
                      Change{"ReplacedByALinkToItself", R"(rm "$0"; ln -s "$0" "$0")", NotInstalled},
                      Change{"ReplacedByALinkToItsNewPlace", R"(mv "$0" "$0-2"; ln -s "$0-2" "$0")", Well},
                      Change{"MadeNotExecutable", R"(chmod -x "$0")", NotRun},
                      Change{"ReplacedByATextForNoInterpreter",
                             R"(echo '#!/nowhere' > "$0.new"; chmod +x "$0.new"; mv "$0.new" "$0")", NotRun},
                      Change{"ReplacedByAPipe", R"(rm "$0"; mkfifo -m 777 "$0")", NotRun},
                      Change{"Emptied", R"(: > "$0.new"; chmod +x "$0.new"; mv "$0.new" "$0")", Silent}),
    [](const auto& change) { return change.param.name; });

TEST_F(ToolFileTest, RemovedByAFailingRunIsNotMissedUntilTheNextCommand) {
    m_Tool.UseScript(R"(simulate "$@"; [ "$arguments" != '-ctrlinfo -a0' ] || { rm "$0"; exit 1; })");
    Seen expected = Failure(CommandNamed("Controller"));
    expected.runs = Rejection(CommandNamed("Controller")).runs;
    Expect(Call(), expected);
}

TEST_F(ToolFileTest, RemovedByAFailingRunAndPutBackDuringThePauseIsOnlyATry) {
    m_Tool.UseScript(
        R"(simulate "$@"; [ "$arguments" != '-ctrlinfo -a0' ] || { mv "$0" "$0.away"; exit 1; })");
    testsupport::OnPause([this] { m_Tool.UseScript(R"(simulate "$@")"); });
    Expect(Call(), SuccessAtRun(CommandNamed("Controller"), 2));
}

TEST_F(ToolFileTest, RemovedBeforeTheCallIsNotInstalled) {
    m_Tool.Uninstall();
    Seen expected;
    expected.returnValue = 0xA0;
    expected.reason = "03";
    expected.failures = {"VDK is not installed.", "CZORBALT_MngSrvRaid::GetInfo() Error[reason:03]"};
    Expect(Call(), expected);
}

}  // namespace
