// What changed between two documents, captures or scenarios.

#include "SavedDocument.h"
#include "sandbox/Sandbox.h"
#include "test_support/Command.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

namespace command::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

const fs::path kShipped = COMMAND_TEST_SCENARIOS;

/// A copy of a shipped scenario, to be changed.
class Server final {
  public:
    explicit Server(const std::string& scenario) {
        fs::copy(kShipped / scenario, Path(), fs::copy_options::recursive);
    }
    [[nodiscard]] std::string Path() const { return m_Folder / "server"; }
    void Change(const std::string& report, const std::string& old, const std::string& now) const {
        const fs::path file = fs::path(Path()) / report;
        WriteFile(file, Replaced(ReadFile(file), old, now));
    }

  private:
    TempFolder m_Folder;
};

Ended RunWithInput(std::vector<std::string> words, const std::string& input) {
    const Command command{.words = std::move(words), .inChild = [&] {
                              const int file = ::open(input.c_str(), O_RDONLY);
                              ::dup2(file, STDIN_FILENO);
                          }};
    return command.Run();
}

std::string ServerXml(const std::string& keys) {
    return "<RAID version=\"1\"><Item Name=\"Controller Information\" Valid=\"TRUE\">" + keys +
           "</Item></RAID>";
}

std::string KeyXml(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + name + "\" Value=\"" + value + "\" Valid=\"TRUE\"/>";
}

TEST(Diff, SaysWhatChangedAndWhetherAnythingDid) {
    const std::string xml = XmlOf("small");
    const Saved before(xml);
    const Saved after(Replaced(xml, "Value=\"31 C\"", "Value=\"45 C\""));
    const Ended same = RunCommand({"diff", before.Path(), before.Path()});
    EXPECT_EQ(same.ExitStatus(), 0);
    EXPECT_EQ(same.out, "no difference\n");
    const Ended changed = RunCommand({"diff", "--all", before.Path(), after.Path()});
    EXPECT_EQ(changed.ExitStatus(), 1);
    EXPECT_EQ(changed.out,
              "changed   controller 0, the drive in enclosure 252 slot 0: General Information / Temperature: "
              "\"31 C\" -> \"45 C\"\n1 changed\n");
    EXPECT_EQ(changed.err, "");
}

TEST(Diff, LeavesOutWhatAlwaysMovesUnlessAsked) {
    const Saved before(ServerXml(KeyXml("Voltage", "4053 mV")));
    const Saved after(ServerXml(KeyXml("Voltage", "4050 mV")));
    const Ended ended = RunCommand({"diff", before.Path(), after.Path()});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.out, "no difference but in what always moves; --all shows it\n");
    const Ended all = RunCommand({"diff", "--all", before.Path(), after.Path()});
    EXPECT_EQ(all.ExitStatus(), 1);
    EXPECT_THAT(all.out, HasSubstr("Voltage: \"4053 mV\" -> \"4050 mV\""));
}

TEST(Diff, FailsOnWhatIsNoDocument) {
    const Saved before("<RAID version=\"1\"/>");
    const Saved broken("<RAID version=\"1\">");
    EXPECT_EQ(RunCommand({"diff", before.Path(), broken.Path()}).ExitStatus(), 4);
    EXPECT_THAT(RunCommand({"diff", before.Path(), broken.Path()}).err,
                HasSubstr(" is no RAID document: it is no XML"));
    EXPECT_THAT(RunWithInput({"diff", before.Path(), "-"}, broken.Path()).err,
                HasSubstr("standard input is no RAID document: it is no XML"));
}

TEST(Diff, FailsOnWhatIsNotThere) {
    const Ended missing = RunCommand({"diff", "small", "/nowhere"});
    EXPECT_EQ(missing.ExitStatus(), 4);
    EXPECT_EQ(missing.out, "");
    EXPECT_EQ(missing.err, "mngsrvraid: /nowhere cannot be read: No such file or directory\n");
    const Ended mistyped = RunCommand({"diff", "samll", "small"});
    EXPECT_EQ(mistyped.ExitStatus(), 4);
    EXPECT_EQ(mistyped.err, "mngsrvraid: there is no file and no scenario samll; did you mean small?\n");
    const TempFolder folder;
    const Ended empty = RunCommand({"diff", "small", folder.Path()});
    EXPECT_EQ(empty.ExitStatus(), 4);
    EXPECT_THAT(empty.err, HasSubstr(" is no scenario: it has neither v.txt nor server.conf; "));
}

TEST(Diff, TakesDocumentsAndScenariosInAnyMixture) {
    const Saved gone(XmlOf("levels/raid5-gone"));
    const Saved rebuilding(XmlOf("levels/raid5-rebuilding"));
    const std::string expected =
        "changed   controller 0, the drive in enclosure 252 slot 2: General Information / PD Status: "
        "\"ERROR\" "
        "-> \"REBUILD\"\n"
        "changed   controller 0, the drive in enclosure 252 slot 2: General Information / PD Status(Detail): "
        "\"FAILED\" -> \"REBUILD\"\n2 changed\n";
    for (const std::string& before : {gone.Path(), std::string("levels/raid5-gone")}) {
        for (const std::string& after : {rebuilding.Path(), std::string("levels/raid5-rebuilding"),
                                         (kShipped / "levels/raid5-rebuilding").string()}) {
            const Ended ended = RunCommand({"diff", before, after});
            EXPECT_EQ(ended.ExitStatus(), 1);
            EXPECT_EQ(ended.out, expected) << before << " " << after;
            EXPECT_EQ(ended.err, "");
        }
    }
    EXPECT_EQ(RunCommand({"diff", "small", "small"}).out, "no difference\n");
}

// It is out of sight as soon as another scenario is in the tool's place.
TEST(Diff, TakesACaptureFromTheToolsDirectory) {
    const std::string mine = "/opt/zorbalt/vdk/mine";
    for (const std::vector<std::string>& sides :
         {std::vector<std::string>{"small", mine}, {mine, "small"}, {mine, mine}}) {
        const Command command{.words = {"diff", sides[0], sides[1]}, .inChild = [&] {
                                  sandbox::EnterSandboxWithoutTool();
                                  fs::copy(kShipped / "small", mine, fs::copy_options::recursive);
                              }};
        const Ended ended = command.Run();
        EXPECT_EQ(ended.err, "");
        EXPECT_EQ(ended.out, "no difference\n");
    }
}

TEST(Diff, ReadsStandardInputAsEitherSide) {
    const Saved small(XmlOf("small"));
    EXPECT_EQ(RunWithInput({"diff", "-", "small"}, small.Path()).out, "no difference\n");
    EXPECT_EQ(RunWithInput({"diff", "small", "-"}, small.Path()).ExitStatus(), 0);
    EXPECT_EQ(RunWithInput({"diff", "-", "large"}, small.Path()).ExitStatus(), 1);
}

TEST(Diff, TakesAFileBeforeAShippedScenarioOfItsName) {
    const TempFolder folder;
    folder.Write("small", XmlOf("large"));
    const Command command{.words = {"diff", "small", "large"}, .inChild = [&] {
                              if (::chdir(folder.Path().c_str()) != 0) {
                                  ::_exit(127);
                              }
                          }};
    EXPECT_EQ(command.Run().out, "no difference\n");
}

TEST(Diff, FollowsADriveFromOneCaptureToAnother) {
    const TempFolder folder;
    const Server server("large");
    ASSERT_EQ(RunCommand({"--scenario", server.Path(), "capture", folder / "before"}).ExitStatus(), 0);
    // Two that change places, and one that is replaced and runs hotter.
    server.Change("pdinfo_a0.txt", "7K02025202C4", "7K0303520XC4");
    server.Change("pdinfo_a0.txt", "7K03025203C4", "7K02025202C4");
    server.Change("pdinfo_a0.txt", "7K0303520XC4", "7K03025203C4");
    server.Change("pdinfo_a0.txt", "7K05025205C4", "7K99025205C4");
    ASSERT_EQ(RunCommand({"--scenario", server.Path(), "capture", folder / "after"}).ExitStatus(), 0);
    const Ended ended = RunCommand({"diff", folder / "before", folder / "after"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_EQ(ended.out,
              "moved     controller 0, the drive in enclosure 252 slot 2 (TF600S15, serial number "
              "7K02025202C4) -> controller 0, enclosure 252 slot 3\n"
              "moved     controller 0, the drive in enclosure 252 slot 3 (TF600S15, serial number "
              "7K03025203C4) -> controller 0, enclosure 252 slot 2\n"
              "replaced  controller 0, the drive in enclosure 252 slot 5: TF600S15, serial number "
              "7K05025205C4 -> TF600S15, serial number 7K99025205C4\n"
              "1 replaced, 2 moved\n");
    const Saved saved(XmlOf(folder / "after"));
    EXPECT_EQ(RunCommand({"diff", folder / "before", saved.Path()}).out, ended.out);
}

// What stands for a serial number is counted anew in each of them.
TEST(Diff, OfRedactedCapturesKnowsDrivesByTheirPlaces) {
    const TempFolder folder;
    const Server server("small");
    ASSERT_EQ(
        RunCommand({"--scenario", server.Path(), "capture", folder / "before", "--redact"}).ExitStatus(), 0);
    fs::copy(server.Path() + "/pdinfo_pd252.0_a0.txt", server.Path() + "/pdinfo_pd252.9_a0.txt");
    // A drive in front of all others, so that each of those gets another word.
    server.Change("pdinfo_a0.txt", "PD0(",
                  "PD9(None)\n### General Information ###\n Serial Number : 7K99\n PD Status : Unconfig "
                  "GOOD\n\n### Slot Information ###\n Enclosure No. : 252\n Slot No. : 9\n\nPD0(");
    ASSERT_EQ(RunCommand({"--scenario", server.Path(), "capture", folder / "after", "--redact"}).ExitStatus(),
              0);
    ASSERT_NE(XmlOf(folder / "after").find("serial-0005"), std::string::npos);
    const Ended ended = RunCommand({"diff", folder / "before", folder / "after"});
    EXPECT_THAT(ended.out, StartsWith("appeared  controller 0, the drive in enclosure 252 slot 9 "));
    EXPECT_THAT(ended.out, testing::EndsWith("\n1 appeared\n"));
    const Ended whole = RunCommand({"diff", folder / "before", "small"});
    EXPECT_EQ(whole.out, "no difference but in what is redacted; --all shows it\n");
    EXPECT_EQ(whole.ExitStatus(), 0);
}

TEST(Diff, RefusesAnIncompleteCaptureOnEitherSide) {
    const Server server("small");
    WriteFile(server.Path() + "/INCOMPLETE", "");
    const std::string words =
        " is an incomplete capture; make another one, or, to use what is there, delete its file INCOMPLETE";
    for (const std::vector<std::string>& sides :
         {std::vector<std::string>{server.Path(), "small"}, {"small", server.Path()}}) {
        const Ended ended = RunCommand({"diff", sides[0], sides[1]});
        EXPECT_EQ(ended.ExitStatus(), 4);
        EXPECT_EQ(ended.out, "");
        EXPECT_THAT(ended.err, StartsWith("mngsrvraid: " + server.Path() + words));
    }
}

// Not as a method's failure is: that status would say that there are differences.
TEST(Diff, AScenarioThatFailsIsNoDifference) {
    const Ended ended = RunCommand({"diff", "small", "half-failed"});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, StartsWith("mngsrvraid: diff failed with return value 0x000000a1: "));
    EXPECT_THAT(ended.err, HasSubstr("look at the scenario half-failed, "));
    EXPECT_EQ(CountLines(ended.err), 1U);
}

TEST(Diff, AsksUnderATimeLimitThatIsNoDifferenceEither) {
    const InstallRoot root;
    const Server server("small");
    WriteFile(server.Path() + "/pdinfo_a0.do", "sleep 600\n");
    const Ended ended =
        RunCommand({"--install-dir", root.Path(), "--timeout", "1", "diff", "small", server.Path()});
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.out, "");
    EXPECT_THAT(ended.err, HasSubstr(" did not end within 1 s, and was ended\n"));
    EXPECT_TRUE(root.ResultFiles().empty());
}

TEST(Diff, OfSingleDrivesComparesTheirSmartData) {
    const auto drive = [](const std::string& slot) {
        return RunCommand({"--scenario", "large", "get-pd-info", "1", "32", slot}).out;
    };
    const std::string xml = drive("5");
    const Saved before(xml);
    const Saved older(Replaced(Replaced(xml, "20496 Hours", "20500 Hours"), "000000020496", "000000020500"));
    EXPECT_EQ(RunCommand({"diff", before.Path(), older.Path()}).out,
              "no difference but in what always moves; --all shows it\n");
    const Saved worse(Replaced(xml, "000000003521", "000000003529"));
    EXPECT_EQ(
        RunCommand({"diff", before.Path(), worse.Path()}).out,
        "changed   the drive in enclosure 32 slot 5: SMART Information / SMART Detail(SATA) 197 Current "
        "Pending Sector Count / Raw Data: \"000000003521\" -> \"000000003529\"\n1 changed\n");
    const Saved other(drive("4"));
    const Ended ended = RunCommand({"diff", before.Path(), other.Path()});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_THAT(ended.out, StartsWith("vanished  the drive in enclosure 32 slot 5 (MARLE HD1000N7, serial "));
}

TEST(Diff, IsAlsoAnObjectForPrograms) {
    const Ended ended = RunCommand({"diff", "small", "small", "--format", "json"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out,
                StartsWith("{\n  \"schema_version\": 1,\n  \"before\": {\n    \"source\": \"small\",\n  "
                           "  \"kind\": \"scenario\"\n  },\n"));
    EXPECT_THAT(ended.out, HasSubstr("\"changes\": []"));
    const Saved saved(XmlOf("large"));
    const Ended changed = RunCommand({"diff", saved.Path(), "small", "--format", "json"});
    EXPECT_EQ(changed.ExitStatus(), 1);
    EXPECT_THAT(changed.out, HasSubstr("\"source\": \"" + saved.Path() + "\",\n    \"kind\": \"document\""));
    EXPECT_EQ(RunCommand({"diff", "small", "large", "--format", "table"}).out,
              RunCommand({"diff", "small", "large"}).out);
}

TEST(Diff, StoresWhatItPrints) {
    const TempFolder folder;
    const Ended ended = RunCommand(
        {"diff", "small", "large", "--output", folder / "changes", "--trace-file", folder / "trace"});
    EXPECT_EQ(ended.ExitStatus(), 1);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(folder.Read("changes"), RunCommand({"diff", "small", "large"}).out);
    EXPECT_NE(folder.Read("trace"), "");
}

TEST(Diff, RefusesWhatDoesNotGoWithIt) {
    const std::string sides = "diff needs two saved documents, captures or scenarios: OLD NEW";
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"diff"}, sides},
        {{"diff", "a"}, sides},
        {{"diff", "", "a"}, sides},
        {{"diff", "-", "-"}, "standard input is one document: - can be OLD or NEW, not both"},
        {{"diff", "a", "b", "--format", "html"}, "--format of diff takes table or json, not \"html\""},
        {{"diff", "a", "b", "--format", "json", "--compact"}, "--compact does not go with diff"},
        {{"--scenario", "small", "diff", "a", "b"},
         "--scenario does not go with diff, which takes a scenario as OLD or NEW"},
    };
    for (const auto& [words, line] : cases) {
        const Ended ended = RunCommand(words);
        EXPECT_EQ(ended.ExitStatus(), 2) << line;
        EXPECT_EQ(ended.err, "mngsrvraid: " + line + "; see mngsrvraid --help\n");
    }
}

}  // namespace
}  // namespace command::test
