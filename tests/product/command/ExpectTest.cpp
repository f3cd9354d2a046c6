// What a server ought to have: saving it, and judging by it.

#include "test_support/Command.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <utility>

namespace command::test {
namespace {

using namespace testsupport;

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Expect : public testing::Test {
  protected:
    [[nodiscard]] std::string File() const { return m_Folder / "well.json"; }

    [[nodiscard]] Ended Save(const std::string& scenario, std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"--scenario", scenario, "expect", "--save", File()});
        return RunCommand(more);
    }

    // Of a scenario by the file.
    [[nodiscard]] Ended Health(const std::string& scenario, std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"--scenario", scenario, "health", "--expect", File(), "--verbose"});
        return RunCommand(more);
    }

    const TempFolder m_Folder;
};

TEST_F(Expect, SavesWhatAServerHas) {
    const Ended saved = Save("small", {"--host", "storage7"});
    EXPECT_EQ(saved.ExitStatus(), 0);
    EXPECT_EQ(saved.err, "");
    EXPECT_EQ(saved.out, "saved in " + File() +
                             ": 1 controller, 1 group, 1 logical drive, 3 drives, 0 findings accepted\n");
    const std::string text = ReadFile(File());
    EXPECT_THAT(text, StartsWith("{\n  \"version\": 1,\n  \"host\": \"storage7\",\n  \"saved_at\": \""));
    EXPECT_THAT(
        text, HasSubstr("\"serial\": \"7K02025202C4\", \"role\": \"global spare\", \"media_errors\": 0 }\n"));
    const Ended same = Health("small");
    EXPECT_EQ(same.ExitStatus(), 0);
    EXPECT_EQ(CountLines(same.out), 1U);
}

TEST_F(Expect, ItsFileFitsItsSchema) {
    ASSERT_EQ(Save("large", {"--accept-until", "2999-12-31", "--reason", "known"}).ExitStatus(), 0);
    const Command check{.words = {"-c",
                                  "import json, sys, jsonschema\n"
                                  "schema, file = (json.load(open(name)) for name in sys.argv[1:])\n"
                                  "jsonschema.Draft202012Validator.check_schema(schema)\n"
                                  "jsonschema.Draft202012Validator(schema).validate(file)\n"
                                  "assert len(file['accepted']) == 7 and len(file['controllers']) == 2\n",
                                  COMMAND_TEST_SOURCES "/docs/expectations.schema.json", File()},
                        .program = "/usr/bin/python3"};
    const Ended ended = check.Run();
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
}

TEST_F(Expect, TellsWhatIsNotAsItWas) {
    const std::string xml = RunCommand({"--scenario", "small", "get-info"}).out;
    ASSERT_EQ(Save("small").ExitStatus(), 0);
    const std::size_t spare = xml.rfind("<Item Name=\"Physical Drive Information\"");
    WriteFile(m_Folder / "now.xml", xml.substr(0, spare) + "</RAID>\n");
    const std::string line =
        "WARNING: controller 0, the drive in enclosure 252 slot 2: gone, expected: global spare (TF600S15, "
        "serial number 7K02025202C4)\n";
    const std::vector<std::string> now = {"--document", m_Folder / "now.xml", "--expect", File()};
    std::vector<std::string> words = {"health", "--verbose"};
    words.insert(words.end(), now.begin(), now.end());
    const Ended health = RunCommand(words);
    EXPECT_EQ(health.ExitStatus(), 1);
    EXPECT_THAT(health.out, EndsWith(line));
    words = {"show"};
    words.insert(words.end(), now.begin(), now.end());
    EXPECT_THAT(RunCommand(words).out,
                HasSubstr("the drive in enclosure 252 slot 2: gone, expected: global"));
    words.insert(words.end(), {"--format", "html"});
    EXPECT_THAT(RunCommand(words).out, HasSubstr("gone, expected: global spare"));
}

TEST_F(Expect, RefusesAServerThatIsNotWell) {
    const Ended refused = Save("large");
    EXPECT_EQ(refused.ExitStatus(), 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_THAT(refused.err,
                StartsWith("mngsrvraid: nothing is saved, because the server is not well: CRITICAL, "
                           "2 critical, 5 warnings in 2 controllers, "));
    EXPECT_THAT(refused.err,
                EndsWith("; mend it, or accept what is known: --accept-until DAY --reason TEXT\n"));
    EXPECT_FALSE(std::filesystem::exists(File()));
    const Ended empty = Save("empty", {"--accept-until", "2999-12-31", "--reason", "known"});
    EXPECT_EQ(empty.ExitStatus(), 1);
    EXPECT_THAT(empty.err, EndsWith("UNKNOWN, no controller, nothing to judge; mend it\n"));
    EXPECT_FALSE(std::filesystem::exists(File()));
}

TEST_F(Expect, AcceptsWhatIsKnown) {
    ASSERT_EQ(Save("large", {"--accept-until", "2999-12-31", "--reason", "on the list"}).ExitStatus(), 0);
    const Ended health = Health("large");
    EXPECT_EQ(health.ExitStatus(), 0);
    EXPECT_THAT(health.out,
                StartsWith("RAID OK - 2 controllers, 7 groups, 8 logical drives, 26 drives, all else "
                           "well, 7 findings accepted | "));
    EXPECT_THAT(health.out, HasSubstr(" unknown=0 accepted=7\n"));
    EXPECT_THAT(
        health.out,
        HasSubstr("\nACCEPTED: controller 0, RG2, LD4: OFFLINE (accepted until 2999-12-31: on the list)\n"));
    const Ended shown = RunCommand({"--scenario", "large", "show", "--expect", File()});
    EXPECT_THAT(shown.out, StartsWith("OK: "));
    EXPECT_THAT(shown.out, HasSubstr("\n  ACCEPTED  controller 0, RG2, LD4: OFFLINE (accepted until"));
    const Ended page = RunCommand({"--scenario", "large", "show", "--expect", File(), "--format", "html"});
    EXPECT_THAT(page.out, HasSubstr("accepted until 2999-12-31: on the list"));
    const Ended json = RunCommand({"--scenario", "large", "show", "--expect", File(), "--format", "json"});
    EXPECT_THAT(json.out, HasSubstr("\"accepted\": true,\n        \"accepted_until\": \"2999-12-31\",\n"
                                    "        \"accepted_reason\": \"on the list\""));
    const Ended metrics =
        RunCommand({"--scenario", "large", "show", "--expect", File(), "--format", "prometheus"});
    EXPECT_THAT(metrics.out, HasSubstr("\nraid_findings{level=\"accepted\"} 7\n"));
}

TEST_F(Expect, KeepsWhatWasAcceptedBefore) {
    WriteFile(File(),
              "// by hand\n{\"version\": 1, \"accepted\": [{\"place\": \"controller 0, RG2, LD4\", \"what\": "
              "\"OFFLINE\", \"until\": \"2998-01-01\", \"reason\": \"first\"}]}");
    ASSERT_EQ(Save("large", {"--accept-until", "2999-12-31", "--reason", "second"}).ExitStatus(), 0);
    const std::string text = ReadFile(File());
    EXPECT_THAT(text, HasSubstr("\"what\": \"OFFLINE\", \"until\": \"2998-01-01\", \"reason\": \"first\""));
    EXPECT_THAT(text, HasSubstr("\"reason\": \"second\""));
    // Now nothing is left that would have to be accepted.
    EXPECT_EQ(Save("large").ExitStatus(), 0);
    EXPECT_EQ(Health("large").ExitStatus(), 0);
}

TEST_F(Expect, NeverReplacesAFileThatItCannotRead) {
    WriteFile(File(), "{ \"version\": 1, }");
    const Ended ended = Save("small");
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_EQ(ended.err,
              "mngsrvraid: " + File() + " holds no expectations: line 1: it cannot be read as JSON\n");
    EXPECT_EQ(ReadFile(File()), "{ \"version\": 1, }");
}

TEST_F(Expect, GoesToStandardOutputAsItIs) {
    const Ended ended = RunCommand({"--scenario", "small", "expect", "--save", "-"});
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, StartsWith("{\n  \"version\": 1,\n"));
    EXPECT_THAT(ended.out, EndsWith("\n}\n"));
}

TEST_F(Expect, IsReadBeforeTheServerIsAsked) {
    const Ended health = Health("small");
    EXPECT_EQ(health.ExitStatus(), 3);
    EXPECT_EQ(health.out, "RAID UNKNOWN - " + File() + " cannot be read: No such file or directory\n");
    const Ended shown = RunCommand({"--scenario", "small", "show", "--expect", File()});
    EXPECT_EQ(shown.ExitStatus(), 4);
    EXPECT_EQ(shown.out, "");
}

TEST(Limit, OfEachKindIsAnOption) {
    const std::pair<std::vector<std::string>, const char*> kCases[] = {
        {{"--max-temperature", "37"}, " 38 C, limit 37 C ("},
        {{"--max-media-errors", "200"}, " 211 media errors, limit 200 ("},
        {{"--min-spares", "3"}, "\nWARNING: controller 0: 2 spares, fewest wanted 3\n"},
    };
    for (const auto& [limit, words] : kCases) {
        std::vector<std::string> all = {"--scenario", "large", "health", "--verbose"};
        EXPECT_THAT(RunCommand(all).out, Not(HasSubstr(words)));
        all.insert(all.end(), limit.begin(), limit.end());
        EXPECT_THAT(RunCommand(all).out, HasSubstr(words));
    }
}

TEST_F(Expect, GrowthIsCountedFromTheFile) {
    WriteFile(File(), R"({"version": 1, "controllers": [{"number": "0", "drives": [
        {"serial": "7K1001602C4", "media_errors": 200}]}]})");
    EXPECT_THAT(Health("large", {"--max-media-error-growth", "10"}).out,
                HasSubstr(": 211 media errors, 200 when it was saved, limit of growth 10 ("));
    EXPECT_THAT(Health("large", {"--max-media-error-growth", "11"}).out,
                Not(HasSubstr(" when it was saved")));
}

TEST(WrongUse, OfExpectationsAndLimits) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
        {{"expect"}, "expect needs a file to save to: --save FILE"},
        {{"expect", "--save", "a", "--output", "b"}, "expect takes --save FILE, not --output"},
        {{"expect", "--save", ""}, "--save needs a path that is not empty"},
        {{"expect", "--save", "a", "--reason", "b"}, "--accept-until DAY and --reason TEXT go together"},
        {{"expect", "--save", "a", "--reason", "b", "--accept-until", "June"},
         "--accept-until takes a day such as 2031-06-30, and --reason some words"},
        {{"show", "--max-temperature", "hot"}, "--max-temperature takes a whole number, not \"hot\""},
        {{"show", "--min-spares", "-1"}, "--min-spares takes a whole number, not \"-1\""},
        {{"show", "--max-media-error-growth", "1"},
         "--max-media-error-growth needs to know since when: --expect FILE"},
        {{"get-info", "--expect", "a"}, "unknown option \"--expect\""},
    };
    for (const auto& [words, line] : cases) {
        const Ended ended = RunCommand(words);
        EXPECT_EQ(ended.ExitStatus(), 2) << line;
        EXPECT_EQ(ended.err, "mngsrvraid: " + line + "; see mngsrvraid --help\n");
    }
    const TempFolder folder;
    const Ended over = RunCommand({"--scenario", "small", "expect", "--save", folder / "a", "--reason", "b",
                                   "--accept-until", "2020-01-01"});
    EXPECT_EQ(over.ExitStatus(), 2);
    EXPECT_EQ(over.err, "mngsrvraid: --accept-until names a day that is over\n");
}

}  // namespace
}  // namespace command::test
