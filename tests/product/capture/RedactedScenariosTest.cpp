// What is left of a server's numbers and names when its capture is redacted, and what its document is then.

#include "basics/Words.h"
#include "scenario/ScenarioFolder.h"
#include "test_support/Command.h"
#include "test_support/Pattern.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace capture::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

const fs::path kAllScenarios = COMMAND_TEST_SCENARIOS;

/// Scenarios whose texts the module cannot read, which is what they show.
const std::set<std::string> kUnreadable = {"faults/bare-version", "faults/broken-header",
                                           "faults/truncated-title"};

/// What a simulator says of a server.
std::string ToolSays(const fs::path& server, const std::vector<std::string>& words) {
    const Command tool = {.words = words,
                          .environment = {{"VDKSIM_SCENARIO", server.string()}},
                          .program = COMMAND_TEST_SIMULATOR};
    return tool.Run().out;
}

/// Everything that the tool says of whole controllers, and what the scenario has of single drives.
void WriteTexts(const fs::path& server, const fs::path& folder) {
    const std::string controllers = ToolSays(server, {"-ctrlinfo", "-aAll"});
    WriteFile(folder / "v.txt", ToolSays(server, {"-v"}));
    WriteFile(folder / "ctrlinfo_aAll.txt", controllers);
    for (const Match& match : MatchesIn(controllers, "RAID Controller\\s*:\\s*(\\d+)")) {
        const std::string& number = match[1];
        const std::string controller = "-a" + number;
        const std::string end = "_a" + number + ".txt";
        WriteFile(folder / ("ctrlinfo" + end), ToolSays(server, {"-ctrlinfo", controller}));
        WriteFile(folder / ("ldpdinfo" + end), ToolSays(server, {"-ldpdinfo", controller}));
        WriteFile(folder / ("pdinfo" + end), ToolSays(server, {"-pdinfo", controller}));
        WriteFile(folder / ("pdinfo_nosmart" + end), ToolSays(server, {"-pdinfo", "-nosmart", controller}));
    }
    for (const auto& file : fs::directory_iterator(server)) {
        if (file.path().filename().string().starts_with("pdinfo_pd") && file.path().extension() == ".txt") {
            fs::copy_file(file.path(), folder / file.path().filename());
        }
    }
}

/// Letters and digits alone, in lower case: however a value is written, it is in it.
std::string Bare(const std::string& text) {
    std::string bare;
    for (const char each : basics::InLowerCase(text)) {
        bare += basics::IsAlphanumeric(each) ? std::string(1, each) : "";
    }
    return bare;
}

/// A text in which colons and dashes are no matter.
std::string WithoutGroups(const std::string& text) {
    std::string bare = basics::InLowerCase(text);
    bare.erase(std::remove_if(bare.begin(), bare.end(), [](char each) { return each == ':' || each == '-'; }),
               bare.end());
    return bare;
}

/// Values that its texts give away by a key, as they stand there.
std::set<std::string> ValuesOf(const fs::path& folder) {
    const std::string key =
        "(Serial|WWN|SAS A|UUID|Tag|Host Name|IP A|MAC|Licence|Mail)[^:\n]*:[ \t]*([^ \t\r\n]{4,300})";
    std::set<std::string> values;
    for (const auto& file : fs::directory_iterator(folder)) {
        for (const Match& match : MatchesIn(ReadFile(file.path()), key)) {
            values.insert(match[2]);
        }
    }
    return values;
}

void ExpectNoneOf(const std::set<std::string>& values, const fs::path& folder) {
    for (const auto& file : fs::directory_iterator(folder)) {
        const std::string text = ReadFile(file.path());
        const std::string lower = basics::InLowerCase(text);
        const std::string bare = WithoutGroups(text);
        for (const std::string& value : values) {
            EXPECT_EQ(lower.find(basics::InLowerCase(value)), std::string::npos)
                << file.path() << ": " << value;
            EXPECT_EQ(bare.find(WithoutGroups(value)), std::string::npos) << file.path() << ": " << value;
        }
    }
}

struct Item {
    std::string name;
    std::string value;
    std::string frame;  ///< the line without the two
};

std::vector<Item> ItemsOf(const std::string& document) {
    std::vector<Item> items;
    for (const std::string_view line : basics::Words(document, "\n")) {
        const std::string text(line);
        const auto attribute = [&text](const std::string& name) {
            const std::size_t begin = text.find(" " + name + "=\"");
            const std::size_t value = begin + name.size() + 3;
            return begin == std::string::npos ? "" : text.substr(value, text.find('"', value) - value);
        };
        const std::string value = attribute("Value");
        const std::size_t at = value.empty() ? 0 : text.find("Value=\"") + 7;
        items.push_back({attribute("Name"), value, text.substr(0, at) + text.substr(at + value.size())});
    }
    return items;
}

/// The documents are the same but for values, and of those only parts that are words now. How many differ.
std::size_t ExpectSameButForWords(const std::string& original, const std::string& redacted) {
    const std::vector<Item> before = ItemsOf(original);
    const std::vector<Item> after = ItemsOf(redacted);
    EXPECT_EQ(before.size(), after.size());
    std::map<std::string, std::string> words;
    std::size_t differing = 0;
    for (std::size_t at = 0; at < std::min(before.size(), after.size()); ++at) {
        EXPECT_EQ(before[at].frame, after[at].frame);
        if (before[at].value == after[at].value) {
            continue;
        }
        ++differing;
        const std::string word = "(serial|wwn|uuid|tag|host|ip|mac|licence|mail|word)-\\d{4,}";
        EXPECT_FALSE(MatchesIn(after[at].value, word).empty()) << before[at].value << "\n" << after[at].value;
        const std::string same = words.emplace(Bare(before[at].value), after[at].value).first->second;
        EXPECT_EQ(same, after[at].value) << before[at].name;
    }
    return differing;
}

bool IsThere(const fs::path& scenario, const char* file) {
    return fs::exists(kAllScenarios / scenario / file);
}

/// The stages of a scenario that tells something else from time to time, where their drives differ.
std::vector<std::string> StagesOf(const fs::path& scenario) {
    std::vector<std::string> stages;
    for (const std::string& name : TempFolder::NamesIn(kAllScenarios / scenario)) {
        if (IsThere(scenario / name, "pdinfo_a0.txt") && IsThere(scenario, "timeline")) {
            stages.push_back(scenario / name);
        }
    }
    return stages;
}

std::vector<std::string> AllServers() {
    std::vector<std::string> servers;
    for (const std::string& name : scenario::ScenarioNames(kAllScenarios)) {
        if (!IsThere(name, "timeline")) {
            servers.push_back(name);
        }
        const std::vector<std::string> stages = StagesOf(name);
        servers.insert(servers.end(), stages.begin(), stages.end());
    }
    return servers;
}

class RedactedScenario : public testing::TestWithParam<std::string> {
  protected:
    [[nodiscard]] static Ended Ask(const fs::path& folder, std::vector<std::string> words) {
        words.insert(words.begin(), {"--scenario", folder.string()});
        return RunCommand(words);
    }

    /// The scenario's own files over those of the scenario that it is a stage of: less what the tool does but
    /// say, and of many controllers that are alike the first four.
    void CopyServer(const fs::path& scenario) const {
        for (const auto& file : fs::directory_iterator(scenario)) {
            const std::string name = file.path().filename();
            if (file.is_regular_file() && file.path().extension() != ".do" && name != "timeline") {
                const std::string text = ReadFile(file.path());
                WriteFile(
                    m_Server.Path() / name,
                    name == "server.conf" ? Replaced(text, "controllers +\\d\\d+", "controllers 4") : text);
            }
        }
    }

    /// How many values of the document are words now.
    [[nodiscard]] std::size_t CompareAnswers(const std::vector<std::string>& words) const {
        const Ended original = Ask(m_Plain.Path(), words);
        const Ended redacted = Ask(m_Folder.Path(), words);
        EXPECT_EQ(original.ExitStatus(), redacted.ExitStatus()) << testing::PrintToString(words);
        EXPECT_EQ(original.err.substr(0, original.err.find(';')),
                  redacted.err.substr(0, redacted.err.find(';')));
        EXPECT_EQ(original.out.empty(), original.ExitStatus() != 0);
        return ExpectSameButForWords(original.out, redacted.out);
    }

    TempFolder m_Server;
    TempFolder m_Folder;
    TempFolder m_Plain;
};

TEST_P(RedactedScenario, TellsNoNumberOfItsHardwareAndIsOtherwiseTheSame) {
    const fs::path scenario = kAllScenarios / GetParam();
    if (!fs::exists(scenario / "v.txt") && !fs::exists(scenario / "server.conf")) {
        CopyServer(scenario.parent_path());
    }
    CopyServer(scenario);
    WriteTexts(m_Server.Path(), m_Folder.Path());
    fs::copy(m_Folder.Path(), m_Plain.Path(),
             fs::copy_options::recursive | fs::copy_options::overwrite_existing);
    std::set<std::string> serials = ValuesOf(m_Plain.Path());
    std::erase_if(serials, [](const std::string& value) {
        return value.find_first_not_of(value.front()) == std::string::npos;  // "xxxx" is nobody's.
    });
    EXPECT_EQ(serials.empty(), GetParam() == "empty");

    const Ended ended = RunCommand({"redact", m_Folder.Path().string()});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    ExpectNoneOf(serials, m_Folder.Path());
    const std::size_t words = CompareAnswers({"get-info"});
    EXPECT_EQ(words > 0, !serials.empty() && !kUnreadable.count(GetParam()));
    for (const std::string& name : TempFolder::NamesIn(m_Plain.Path())) {
        if (const Match drive = WholeMatch(name, "pdinfo_pd(\\d+)\\.(\\d+)_a(\\d+)\\.txt"); !drive.empty()) {
            (void)CompareAnswers({"get-pd-info", drive[3], drive[1], drive[2]});
        }
    }
}

std::string NameOfScenario(const testing::TestParamInfo<std::string>& scenario) {
    std::string name = scenario.param;
    std::replace_if(
        name.begin(), name.end(), [](char each) { return !basics::IsAlphanumeric(each); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(All, RedactedScenario, testing::ValuesIn(AllServers()), NameOfScenario);

/// A server that tells all that is not to be told, in all ways.
class TellingServer : public testing::Test {
  protected:
    TellingServer() {
        fs::copy(kAllScenarios / "small", Server());
        Insert("ctrlinfo_a0.txt", "Product Name",
               " UUID                         : 3F2504E0-4F89-11D3-9A0C-0305E82C3301\n"
               " Asset Tag                    : ATAG7731\n"
               " Host Name                    : storage7.example.com\n"
               " IP Address                   : 10.4.17.2\n"
               " MAC Address                  : 00:1B:44:11:3A:B7\n"
               " Licence Key                  : QX7P-ZZ19-KLM4\n"
               " Mail Address                 : raid-ops@example.com\n"
               " Last Login                   : from 10.4.17.9 by jo@sub.example.com\n"
               " Notes                        : ATAG7731 of STORAGE7, mac 001b44113ab7, west wing\n");
        Insert("pdinfo_a0.txt", "Serial Number",
               " WWN                          : 5000C500A1B2C3D4\n"
               " SAS Address 0                : 50:00:c5:00:a1:b2:c3:d5\n"
               " Device Path                  : /dev/disk/by-id/wwn-0x5000c500a1b2c3d5-QX7PZZ19KLM4\n");
        for (const auto& file : fs::directory_iterator(Server())) {
            const std::string text = ReadFile(file.path());
            WriteFile(file.path(), Replaced(Replaced(text, "TF600S15", "TF600S15-7k00025200c4x"), "SYSTEM",
                                            "SYS-7K00025200C4-west wing"));
        }
        m_Values = ValuesOf(Server());
        m_Values.insert({"10.4.17.9", "jo@sub.example.com", "west wing", "storage7", "example.com"});
    }

    [[nodiscard]] fs::path Server() const { return m_Folder.Path() / "acme-east"; }
    [[nodiscard]] fs::path Copy() const { return m_Folder.Path() / "copy"; }
    [[nodiscard]] fs::path Other() const { return m_Folder.Path() / "other"; }

    /// Behind each line with the key.
    void Insert(const std::string& file, const std::string& key, const std::string& lines) const {
        const std::string text = ReadFile(Server() / file);
        WriteFile(Server() / file, Replaced(text, "( " + key + "[^\n]*\n)", "$1" + lines));
    }

    [[nodiscard]] Ended Capture(const fs::path& folder, std::vector<std::string> words = {}) const {
        words.insert(words.begin(),
                     {"--scenario", Server().string(), "--host", "acme7", "capture", folder.string()});
        return RunCommand(words);
    }

    static std::string Document(const fs::path& folder) {
        return RunCommand({"--scenario", folder.string(), "get-info"}).out;
    }

    TempFolder m_Folder;
    std::set<std::string> m_Values;
};

TEST_F(TellingServer, IsNotRecognisedInARedactedCapture) {
    ASSERT_GE(m_Values.size(), 15U);
    const Ended ended = Capture(Copy(), {"--redact", "--redact-word", "west wing", "--redact-word", "acme"});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    ExpectNoneOf(m_Values, Copy());
    ExpectNoneOf({"acme", m_Folder.Path().filename().string(), "7K00025200C4"}, Copy());
    EXPECT_GT(ExpectSameButForWords(Document(Server()), Document(Copy())), 15U);
    for (const char* const kind :
         {"serial number", "world-wide name", "UUID", "service tag", "host name", "IP address", "MAC address",
          "licence key", "mail address", "of your own"}) {
        EXPECT_THAT(ended.out, HasSubstr(kind));
        EXPECT_THAT(ReadFile(Copy() / "README.md"), HasSubstr(kind));
    }
}

TEST_F(TellingServer, RedactedAfterwardsItIsTheSameAsRedactedAtOnce) {
    EXPECT_EQ(Capture(Copy(), {"--redact", "--redact-word", "west wing"}).ExitStatus(), 0);
    EXPECT_EQ(Capture(Other()).ExitStatus(), 0);
    const Ended ended = RunCommand({"redact", Other().string(), "--redact-word", "west wing"});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    ASSERT_EQ(TempFolder::NamesIn(Other()), TempFolder::NamesIn(Copy()));
    const std::string time = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d";
    for (const std::string& name : TempFolder::NamesIn(Other())) {
        EXPECT_EQ(Replaced(ReadFile(Other() / name), time, ""), Replaced(ReadFile(Copy() / name), time, ""))
            << name;
    }
}

TEST_F(TellingServer, ListSaysHowOftenEachWordStandsThere) {
    EXPECT_EQ(Capture(Copy(), {"--redact"}).ExitStatus(), 0);
    const std::string readme = ReadFile(Copy() / "README.md");
    const std::string title = "\n## What was replaced\n";
    std::string all = readme.substr(0, readme.find(title));
    for (const std::string& name : TempFolder::NamesIn(Copy())) {
        all += name == "README.md" ? "" : ReadFile(Copy() / name);
    }
    const std::vector<Match> lines = MatchesIn(readme, "    ([a-z]+-\\d+)  (\\d+)\n");
    EXPECT_GE(lines.size(), 12U);
    for (const Match& line : lines) {
        EXPECT_EQ(std::to_string(MatchesIn(all, line[1]).size()), line[2]) << line[1];
    }
}

}  // namespace
}  // namespace capture::test
