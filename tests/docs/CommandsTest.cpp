// The command lines that the documents give to cron, to systemd, to sudo and to jq.

#include "Markdown.h"
#include "sandbox/Sandbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace docs::test {
namespace {

using namespace testsupport;

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kProgram = "/usr/bin/mngsrvraid";
constexpr const char* kCollector = "/var/lib/prometheus/node-exporter";

/// What stands behind `mark` in the lines of a text that hold it.
std::vector<std::string> Behind(const std::string& mark, const std::string& text) {
    std::vector<std::string> found;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t at = line.find(mark); at != std::string::npos) {
            found.push_back(line.substr(at + mark.size()));
        }
    }
    return found;
}

/// The lines of all documents that are meant for /etc/cron.d: "0 7 * * * root command".
std::vector<std::string> CronLines() {
    std::vector<std::string> lines;
    std::vector<std::string> documents = {"README.md", "product/command/mngsrvraid.1"};
    for (const auto& entry : std::filesystem::directory_iterator(COMMAND_TEST_SOURCES "/docs")) {
        if (entry.path().extension() == ".md") {
            documents.push_back("docs/" + entry.path().filename().string());
        }
    }
    for (const std::string& document : documents) {
        for (const std::string& line : Behind(" * * * root ", DocumentText(document))) {
            lines.push_back(line);
        }
    }
    return lines;
}

/// Runs a line with as little around it as cron gives, on a scenario's server; the program is the one that
/// was built, and the collector's directory is `folder`.
Ended RunScheduled(std::string line, const std::string& scenario, const TempFolder& folder) {
    line = Replaced(line, kProgram, COMMAND_TEST_PROGRAM);
    if (line.find(kCollector) != std::string::npos) {
        line = Replaced(line, kCollector, folder.Path());
    }
    const Command command{.words = {"-i", "PATH=/usr/bin:/bin", "HOME=/root", "/bin/sh", "-c", line},
                          .inChild =
                              [=] {
                                  sandbox::EnterSandbox(
                                      COMMAND_TEST_SIMULATOR,
                                      std::filesystem::path(COMMAND_TEST_SCENARIOS) / scenario);
                              },
                          .program = "/usr/bin/env"};
    return command.Run();
}

TEST(Schedules, OfCronRunWithFullPathsAndSayNothingWhereAllIsWell) {
    const std::vector<std::string> lines = CronLines();
    EXPECT_GE(lines.size(), 2U);
    for (const std::string& line : lines) {
        const TempFolder folder;
        EXPECT_THAT(line, Not(HasSubstr("%"))) << "cron takes it for a line end";
        const Ended ended = RunScheduled(line, "small", folder);
        EXPECT_EQ(ended.ExitStatus(), 0) << line;
        EXPECT_EQ(ended.out + ended.err, "") << line;
    }
}

TEST(Schedules, OfCronMailWhatIsNotWell) {
    const TempFolder folder;
    const std::vector<std::string> lines = Behind(" * * * root ", DocumentText("docs/health.md"));
    ASSERT_THAT(lines, SizeIs(1));
    const Ended ended = RunScheduled(lines.front(), "large", folder);
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.out, RunCommand({"--scenario", "large", "health", "--verbose"}).out);
    EXPECT_EQ(CountLines(ended.out), 8U);
}

TEST(Schedules, OfCronAndOfSystemdLeaveTheMetricsToTheCollector) {
    const std::string text = DocumentText("docs/prometheus.md");
    const std::vector<std::string> cron = Behind(" * * * root ", text);
    const std::vector<std::string> systemd = Behind("ExecStart=", text);
    ASSERT_THAT(cron, SizeIs(1));
    EXPECT_EQ(systemd, cron);
    for (const std::string& line : {cron.front(), systemd.front()}) {
        const TempFolder folder;
        EXPECT_EQ(RunScheduled(line, "large", folder).ExitStatus(), 0);
        EXPECT_THAT(ReadFile(folder / "raid.prom"), HasSubstr("\nraid_health 2\n"));
    }
}

#ifdef DOCS_TEST_SYSTEMD_ANALYZE
TEST(Schedules, OfSystemdAreUnderstood) {
    const std::vector<std::string> units = Blocks(DocumentText("docs/prometheus.md"), "ini");
    ASSERT_THAT(units, SizeIs(2));
    const TempFolder folder;
    const auto write = [&](const std::string& name, const std::string& text) {
        WriteFile(folder / name, text);
        return folder / name;
    };
    const Command command{
        .words = {"verify", "--man=no",
                  write("raid-metrics.service", Replaced(units[0], kProgram, COMMAND_TEST_PROGRAM)),
                  write("raid-metrics.timer", units[1])},
        .program = DOCS_TEST_SYSTEMD_ANALYZE};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("raid-metrics"))) << "units of this machine may be complained about";
}
#endif

TEST(Rights, OfSudoAreForCommandsThatThereAre) {
    const std::vector<std::string> rights = Behind("NOPASSWD: ", DocumentText("docs/health.md"));
    ASSERT_THAT(rights, SizeIs(1));
    std::istringstream commands(rights.front());
    std::size_t count = 0;
    for (std::string line; std::getline(commands, line, ','); ++count) {
        const TempFolder folder;
        const Ended ended = RunScheduled(line, "small", folder);
        EXPECT_EQ(ended.ExitStatus(), 0) << line;
        EXPECT_THAT(ended.out, StartsWith("RAID OK - ")) << line;
    }
    EXPECT_EQ(count, 2U);
}

/// What changed on the server large: a drive was pulled, another one replaced, and one has more errors.
std::string ChangesJson(const TempFolder& folder) {
    const std::string before = RunCommand({"--scenario", "large", "get-info"}).out;
    std::string after = Replaced(before, "7K0801600C4", "7K99");
    after = Replaced(after, "\"Media Error Count\" Value=\"211\"", "\"Media Error Count\" Value=\"212\"");
    const std::string drive = "<Item Name=\"Physical Drive Information\"";
    const std::size_t begin = after.rfind(drive, after.find("WMX111603"));
    after.erase(begin, after.find(drive, begin + 1) - begin);
    WriteFile(folder / "before.xml", before);
    WriteFile(folder / "after.xml", after);
    return RunCommand({"diff", "--format", "json", folder / "before.xml", folder / "after.xml"}).out;
}

// Each prints something of the server large; a question whether all is well answers by its exit status alone.
TEST(Questions, ForJqAreAnswered) {
    const std::string text = DocumentText("docs/json.md");
    const TempFolder folder;
    WriteFile(folder / "raid.json",
              RunCommand({"--scenario", "large", "--host", "storage7", "--format", "json", "get-info"}).out);
    WriteFile(folder / "changes.json", ChangesJson(folder));
    std::map<std::string, std::string> answers;
    for (const std::string& question : Behind("    jq ", text)) {
        const Command command{.words = {"-c", "jq " + question},
                              .inChild = [&] { std::filesystem::current_path(folder.Path()); },
                              .program = "/bin/sh"};
        const Ended ended = command.Run();
        EXPECT_EQ(ended.err, "") << question;
        EXPECT_EQ(ended.ExitStatus(), question.starts_with("-e ") ? 1 : 0) << question;
        EXPECT_EQ(ended.out.empty(), question.starts_with("-e ")) << question;
        answers[question] = ended.out;
    }
    EXPECT_GE(answers.size(), 10U);
    const auto answerTo = [&](const std::string& part) {
        const auto found = std::find_if(answers.begin(), answers.end(), [&](const auto& answer) {
            return answer.first.find(part) != std::string::npos;
        });
        return found == answers.end() ? "no such question: " + part : found->second;
    };
    EXPECT_EQ(answerTo(".host"), "storage7: CRITICAL\n");
    EXPECT_EQ(answerTo("max_by"), "PD7\tWMX0725207\t38\n");
    EXPECT_EQ(answerTo("select(.level"),
              "PD4\t252\t4\tTF600S15\t7K04025204C4\n"
              "PD10\t16\t2\tTF600S15\t7K1001602C4\n"
              "PD12\t16\t4\tMARLE HD1000N7\tWMX121604\n"
              "PD13\t16\t5\tTF800P\t7K1301605C4\n");
    EXPECT_EQ(answerTo(".media_errors > 10"), "7K1001602C4\nWMX121604\n");
    EXPECT_THAT(answerTo("1e12"), StartsWith("20.19"));
    EXPECT_THAT(answerTo("vanished"), HasSubstr("\tMARLE HD1000N7\tWMX111603\n"));
    EXPECT_EQ(answerTo("replaced"), "7K0801600C4 -> 7K99\n");
    EXPECT_THAT(answerTo("Error Count"), EndsWith("\t211\t212\n"));
}

}  // namespace
}  // namespace docs::test
