// What a tool may do to the file that its own output goes to.
#include "HostedProvider.h"

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <ostream>

namespace {

namespace fs = std::filesystem;
using testsupport::CommandNamed;
using testsupport::Document;
using testsupport::Failure;
using testsupport::Rejection;
using testsupport::Seen;
using testsupport::Success;
using testsupport::ToolBench;
using testsupport::ToolCommand;
using testsupport::ToolCommands;
using testsupport::Unreadable;
using testsupport::Well;

constexpr const char* kNotDeleted = "Failed to delete file(FILE).";
constexpr const char* kResultFile = "NUMBER_MngSrvRaid.txt";

// The file cannot be deleted, which is told behind so many other failures.
Seen Undeleted(Seen seen, std::size_t behind) {
    seen.failures.insert(seen.failures.begin() + static_cast<std::ptrdiff_t>(behind), kNotDeleted);
    return seen;
}

Seen Gone(const ToolCommand& command) {
    return Undeleted(Unreadable(command), command.name == "Version" ? 0 : 1);
}

class ResultFileTest : public testsupport::MisbehaviourTest {
  protected:
    // Root's rights are beyond what modes say. What is checked in the child counts here as well.
    void AsOrdinaryUser(const std::function<void()>& check) {
        if (::getuid() != 0) {
            check();
            return;
        }
        constexpr unsigned kNobody = 65534;
        fs::permissions(m_Root.Path(), fs::perms::all);
        ToolBench::LetEverybodyIn();
        const pid_t child = ::fork();
        if (child == 0) {
            CTraceOutput::SetListener(&m_Trace);
            EXPECT_EQ(::setgid(kNobody), 0);
            EXPECT_EQ(::setuid(kNobody), 0);
            check();
            ::_exit(HasFailure() ? 1 : 0);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << "as the child says above";
    }

    // Each time behind the report of this command.
    void AtEndOf(const ToolCommand& command, const std::string& deed) {
        const std::string pass = R"([ -e "$0.passed" ] || { : > "$0.passed"; exit 0; })";
        m_Tool.UseScript("simulate \"$@\" || exit\n[ \"$arguments\" = '" + command.arguments +
                         "' ] || exit 0\n" + (command.name == "GroupsOfDrives" ? pass : "") + "\n" + deed +
                         "\n");
    }
};

Seen LeftBehind(Seen seen, const char* file) {
    seen.filesLeft = {file};
    return seen;
}

// A directory can be opened, and has no lines.
Seen Directory(const ToolCommand& command) {
    return LeftBehind(Gone(command), kResultFile);
}

class OneFileTest : public ResultFileTest, public ::testing::WithParamInterface<ToolCommand> {};

TEST_P(OneFileTest, CannotBeOpenedWhenItIsDeleted) {
    AtEndOf(GetParam(), R"(rm "$file")");
    Expect(Call(GetParam()), Gone(GetParam()));
}

TEST_P(OneFileTest, IsNotOpenedWhenItIsReplacedByAPipe) {
    AtEndOf(GetParam(), R"(rm "$file"; mkfifo "$file")");
    Expect(Call(GetParam()), Unreadable(GetParam()));
}

TEST_P(OneFileTest, IsNoEmptyReportWhenItIsReplacedByADirectory) {
    AtEndOf(GetParam(), R"(rm "$file"; mkdir "$file")");
    Expect(Call(GetParam()), Directory(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, OneFileTest, ::testing::ValuesIn(ToolCommands()),
                         [](const auto& command) { return command.param.name; });

// What the tool does behind the controller's report, with `$other` for a file elsewhere, and what comes of
// it.
struct Deed {
    const char* name;
    const char* script;
    std::function<Seen(const ToolCommand&)> expected;
    const char* contentsOfOther = "";
};

void PrintTo(const Deed& deed, std::ostream* out) {
    *out << deed.name;
}

Seen Emptied(const ToolCommand& /*command*/) {
    return testsupport::WithoutController();
}

Seen WithLostRoot(const ToolCommand& /*command*/) {
    Seen seen = Success();
    seen.document = Document("  <Item Name=\"\" Value=\"1\" Valid=\"TRUE\"/>\n" +
                             testsupport::LogicalDriveItems() + testsupport::DriveItems());
    return seen;
}

Seen FailedAndUndeleted(const ToolCommand& command) {
    return Undeleted(Failure(command), 2);
}

// The second and third run fail before the tool is started, since its output has nowhere to go.
Seen FailedByDirectory(const ToolCommand& command) {
    Seen seen = LeftBehind(FailedAndUndeleted(command), kResultFile);
    seen.runs = Rejection(command).runs;
    return seen;
}

class DeedTest : public ResultFileTest, public ::testing::WithParamInterface<Deed> {};

TEST_P(DeedTest, ComesTo) {
    const ToolCommand& command = CommandNamed("Controller");
    const std::string other = m_Root.Path() / "other";
    AtEndOf(command, "other='" + other + "'\n" + GetParam().script);
    Expect(Call(), GetParam().expected(command));
    EXPECT_EQ(testsupport::ReadFile(other), GetParam().contentsOfOther);
}

INSTANTIATE_TEST_SUITE_P(
    ResultFile, DeedTest,
    ::testing::Values(Deed{"Emptied", R"(: > "$file")", Emptied},
                      Deed{"EmptiedAndWrittenOn", R"(: > "$file"; echo 'A : 1')", WithLostRoot},
                      Deed{"Overwritten", R"(echo 'A : 1' > "$file"; rm "$file"; cp /dev/null "$file")",
                           Emptied},
                      Deed{"Deleted", R"(rm "$file")", Gone},
                      Deed{"Renamed", R"(mv "$file" "$file.old")",
                           [](const ToolCommand& command) {
                               return LeftBehind(Gone(command), "NUMBER_MngSrvRaid.txt.old");
                           }},
                      Deed{"HardLinked", R"(ln "$file" "$other")", Well,
                           "RAID Controller : 0\n### General Information ###\nProduct Name : Gate SR-4i\n"},
                      Deed{"LinkedElsewhere", R"(mv "$file" "$other"; ln -s "$other" "$file")", Well,
                           "RAID Controller : 0\n### General Information ###\nProduct Name : Gate SR-4i\n"},
                      Deed{"LinkedToNothing", R"(ln -sf /nowhere "$file")", Unreadable},
                      Deed{"LinkedToItself", R"(rm "$file"; ln -s "$file" "$file")", Unreadable},
                      Deed{"LinkedToADirectory", R"(rm "$file"; ln -s / "$file")", Unreadable},
                      Deed{"DeletedWithItsDirectory", R"(rm -r "${file%/*}")", Gone},
                      Deed{"ReplacedByAPipeBeforeAFailure", R"(rm "$file"; mkfifo "$file"; exit 1)",
                           [](const ToolCommand& command) {
                               Seen seen = Failure(command);
                               seen.runs = Rejection(command).runs;
                               return seen;
                           }},
                      Deed{"EmptiedBeforeEachFailure", R"(: > "$file"; exit 1)", Failure},
                      Deed{"DeletedBeforeEachFailure", R"(rm "$file"; exit 1)", FailedAndUndeleted},
                      Deed{"DeletedAfterRejection",
                           R"(echo 'Error - Invalid input at or near token' > "$file"; rm "$file"; exit 1)",
                           FailedAndUndeleted},
                      Deed{"ReplacedByADirectoryBeforeAFailure", R"(rm "$file"; mkdir "$file"; exit 1)",
                           FailedByDirectory}),
    [](const auto& deed) { return deed.param.name; });

// Where the mode of a file is no obstacle, as it is for root.
bool ReadsEverything() {
    const testsupport::TempFolder folder;
    folder.Write("file", "x");
    fs::permissions(folder / "file", fs::perms::none);
    return folder.Read("file") == "x";
}

TEST_F(ResultFileTest, MadeUnreadableCannotBeOpenedByAnOrdinaryUser) {
    AtEndOf(CommandNamed("Controller"), R"(chmod 000 "$file")");
    AsOrdinaryUser([this] { Expect(Call(), Unreadable(CommandNamed("Controller"))); });
}

TEST_F(ResultFileTest, InADirectoryMadeUnwritableStaysBehindAnOrdinaryUser) {
    AtEndOf(CommandNamed("OneDrive"), R"(chmod 555 "${file%/*}")");
    AsOrdinaryUser(
        [this] { Expect(Call("GetPDInfo"), LeftBehind(Undeleted(Success("GetPDInfo"), 0), kResultFile)); });
    fs::permissions(m_Root.Path() / "tmp" / "MSRAID", fs::perms::all);
}

TEST_F(ResultFileTest, MadeUnreadableIsReadAllTheSameByRootOnly) {
    AtEndOf(CommandNamed("Controller"), R"(chmod 000 "$file")");
    Expect(Call(), ReadsEverything() ? Success() : Unreadable(CommandNamed("Controller")));
}

}  // namespace
