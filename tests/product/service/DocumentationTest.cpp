// What tells people of the configuration: the document, the manual page and the example, against what is
// taken.

#include "Configuration.h"

#include "basics/Duration.h"
#include "basics/Words.h"
#include "test_support/Pattern.h"
#include "test_support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

namespace service::test::documentation {
namespace {

using std::chrono::seconds;
using testing::HasSubstr;

/// What is said of a key. Its name has the section before it, and a channel's its kind: "interval",
/// "limits.min_spares", "channel.level", "http.url".
struct Said {
    std::string byDefault;  ///< "5m", "none", "this machine's name"
    std::string range;      ///< "1s to 1d"
    bool operator==(const Said&) const = default;
};
using Keys = std::map<std::string, Said>;

std::set<std::string> NamesOf(const Keys& keys) {
    std::set<std::string> names;
    for (const auto& [name, said] : keys) {
        names.insert(name);
    }
    return names;
}

std::string Source(const std::string& path) {
    return testsupport::ReadFile(SERVICE_TEST_SOURCES "/" + path);
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string Unquoted(std::string text) {
    std::erase_if(text, [](char each) { return each == '"' || each == '`'; });
    return text;
}

/// The keys that the sources take, by the functions that take them.
std::set<std::string> KeysOfTheCode() {
    const std::map<std::string, std::string> kSections = {
        {"ReadConfiguration", ""}, {"TakeAddresses", ""},       {"TakeDoors", ""},
        {"TakeLimits", "limits."}, {"TakeGrowth", "growth."},   {"ChannelFrom", "channel."},
        {"LeastFrom", "channel."}, {"JournalFrom", "journal."}, {"ExecFrom", "exec."},
        {"MailFrom", "mail."},     {"HttpFrom", "http."}};
    std::set<std::string> keys;
    std::string function;
    for (const char* const file : {"Configuration.cpp", "Channels.cpp"}) {
        for (const std::string& line : LinesOf(Source(std::string("product/service/") + file))) {
            for (const auto& match : testsupport::MatchesIn(line, "^[A-Za-z:]+ (\\w+)\\(")) {
                function = match[1];
            }
            for (const auto& match : testsupport::MatchesIn(line, "Take(Count)?\\(\"(\\w+)\"")) {
                EXPECT_TRUE(kSections.contains(function)) << function;
                keys.insert((kSections.contains(function) ? kSections.at(function) : "") + match[2]);
            }
        }
    }
    return keys;
}

/// The rows below a heading of a table: its cells, without what marks code.
std::vector<std::vector<std::string>> TableBelow(const std::string& heading) {
    const std::string document = Source("docs/watch.md");
    const std::size_t start = document.find(heading);
    EXPECT_NE(start, std::string::npos) << heading;
    std::vector<std::vector<std::string>> rows;
    for (const std::string& line : LinesOf(document.substr(start))) {
        if (!line.starts_with('|')) {
            break;
        }
        std::vector<std::string> cells;
        for (const auto& match : testsupport::MatchesIn(line, "\\| *([^|]*[^| ])? *(?=\\|)")) {
            cells.push_back(Unquoted(match[1]));
        }
        rows.push_back(cells);
    }
    rows.erase(rows.begin(), rows.begin() + 2);
    return rows;
}

Keys KeysOfTheDocument() {
    Keys keys;
    for (const std::vector<std::string>& cells : TableBelow("| Key | Default |")) {
        keys[cells.at(0)] = {cells.at(1), cells.at(2)};
    }
    std::string name;
    for (const std::vector<std::string>& cells : TableBelow("| Key | Of | Default |")) {
        name = cells.at(0).empty() ? name : cells.at(0);
        std::istringstream kinds(cells.at(1));
        for (std::string kind; std::getline(kinds >> std::ws, kind, ',');) {
            keys[(kind == "all" ? "channel" : kind) + "." + name] = {cells.at(2), cells.at(3)};
        }
    }
    return keys;
}

/// A key of the example, as it stands there: commented out.
struct Example {
    std::string section;  ///< "[limits]", "[[channel]]"
    std::string line;     ///< "interval = \"5m\""
    std::string prose;
};

/// In their order; a section is one without prose.
std::vector<std::pair<std::string, Example>> Examples() {
    const std::set<std::string> kCommon = {"kind", "name", "level", "queue"};
    std::vector<std::pair<std::string, Example>> examples;
    std::string section;
    std::string kind;
    std::string prose;
    for (const std::string& line : LinesOf(Source("docs/examples/mngsrvraidd.toml"))) {
        if (line.starts_with("# ")) {
            prose = line.substr(2);
        } else if (line.starts_with("#[")) {
            section = line.substr(1);
            examples.push_back({"", {section, "", ""}});
        } else if (line.starts_with('#') && line.size() > 1) {
            const std::string key = line.substr(1, line.find(' ') - 1);
            kind = key == "kind" ? Unquoted(line.substr(line.find('=') + 2)) : kind;
            const std::string before = section == "[[channel]]"
                                           ? (kCommon.contains(key) ? "channel" : kind) + "."
                                       : section.empty() ? ""
                                                         : section.substr(1, section.size() - 2) + ".";
            examples.push_back({before + key, {section, line.substr(1), prose}});
            prose.clear();
        }
    }
    return examples;
}

Keys KeysOfTheExample() {
    Keys keys;
    for (const auto& [name, example] : Examples()) {
        if (name.empty() || (name == "channel.kind" && example.prose.empty())) {
            continue;
        }
        const auto match = testsupport::WholeMatch(example.prose, ".*Default: (.*?)\\.( Range: (.*)\\.)?");
        EXPECT_FALSE(match.empty()) << name << ": " << example.prose;
        keys[name] = match.empty() ? Said() : Said{Unquoted(match[1]), match[3]};
    }
    return keys;
}

/// Of the manual page, by its subsections.
Keys KeysOfTheManual() {
    const std::map<std::string, std::string> kSections = {{"Of the service", ""},
                                                          {"Section [limits]", "limits."},
                                                          {"Section [growth]", "growth."},
                                                          {"Section [[channel]]", "channel."},
                                                          {"Channels of the kind journal", "journal."},
                                                          {"Channels of the kind exec", "exec."},
                                                          {"Channels of the kind mail", "mail."},
                                                          {"Channels of the kind http", "http."}};
    Keys keys;
    std::string section;
    std::string key;
    bool isConfiguration = false;
    for (const std::string& line : LinesOf(Source("product/service/mngsrvraidd.8"))) {
        isConfiguration = line.starts_with(".Sh ") ? line == ".Sh CONFIGURATION" : isConfiguration;
        if (!isConfiguration) {
            continue;
        }
        if (line.starts_with(".Ss ")) {
            EXPECT_TRUE(kSections.contains(line.substr(4))) << line;
            section = kSections.at(line.substr(4));
        } else if (line.starts_with(".It Ic ")) {
            key = section + line.substr(7);
        } else if (const auto match = testsupport::WholeMatch(line, "Default: (.*?)(; (.*))?\\.");
                   !match.empty()) {
            keys[key] = {match[1], match[3]};
        }
    }
    return keys;
}

bool HasValue(const Said& said) {
    const std::string& text = said.byDefault;
    return text != "none" && text.find(' ') == std::string::npos;
}

/// With everything above the key that it needs.
std::string With(const std::string& name, const std::string& value) {
    const std::size_t dot = name.find('.');
    if (dot == std::string::npos) {
        return name + " = " + value + "\n";
    }
    const std::string section = name.substr(0, dot);
    const std::string line = name.substr(dot + 1) + " = " + value + "\n";
    if (section == "limits" || section == "growth") {
        return "expect = \"/a\"\n[" + section + "]\n" + line;
    }
    const std::map<std::string, std::string> kLeast = {{"channel", "kind = \"journal\"\n"},
                                                       {"journal", "kind = \"journal\"\n"},
                                                       {"exec", "kind = \"exec\"\nprogram = \"/a\"\n"},
                                                       {"mail", "kind = \"mail\"\nto = [\"a\"]\n"},
                                                       {"http", "kind = \"http\"\nurl = \"https://a/\"\n"}};
    std::string least = kLeast.at(section);
    if (least.find(name.substr(dot + 1) + " = ") != std::string::npos) {
        least = least.substr(0, least.find('\n') + 1);
    }
    return "[[channel]]\n" + least + (name == "channel.kind" ? "" : line);
}

std::string ProblemsWith(const std::string& name, const std::string& value) {
    try {
        (void)ReadConfiguration(With(name, value));
    } catch (const ConfigurationError& error) {
        return error.what();
    }
    return "";
}

TEST(Documentation, OfTheDocumentHasEveryKeyThatIsTaken) {
    EXPECT_GT(KeysOfTheCode().size(), 30U);
    EXPECT_EQ(NamesOf(KeysOfTheDocument()), KeysOfTheCode());
}

TEST(Documentation, OfTheManualSaysWhatTheDocumentSays) {
    const Keys document = KeysOfTheDocument();
    const Keys manual = KeysOfTheManual();
    EXPECT_EQ(NamesOf(manual), NamesOf(document));
    for (const auto& [name, said] : manual) {
        EXPECT_EQ(said.byDefault, document.at(name).byDefault) << name;
        if (!said.range.empty()) {
            EXPECT_EQ(said.range, document.at(name).range) << name;
        }
    }
}

TEST(Documentation, OfTheExampleSaysWhatTheDocumentSays) {
    const Keys document = KeysOfTheDocument();
    const Keys example = KeysOfTheExample();
    EXPECT_EQ(NamesOf(example), NamesOf(document));
    for (const auto& [name, said] : example) {
        EXPECT_EQ(said.byDefault, document.at(name).byDefault) << name;
        if (!said.range.empty()) {
            EXPECT_EQ(said.range, document.at(name).range) << name;
        }
    }
}

// All of it is taken as it is with the comments taken away, and changes nothing but what has no default.
TEST(Documentation, OfTheExampleIsAccepted) {
    std::string whole;
    for (const auto& [name, example] : Examples()) {
        whole += (name.empty() ? example.section : example.line) + "\n";
    }
    const Configuration configuration = ReadConfiguration(whole);
    EXPECT_EQ(configuration.channels.size(), 4U);
    EXPECT_EQ(ReadConfiguration(Source("docs/examples/mngsrvraidd.toml")), ReadConfiguration(""));
}

TEST(Documentation, OfTheExampleHasTheDefaults) {
    const Keys document = KeysOfTheDocument();
    std::size_t count = 0;
    for (const auto& [name, example] : Examples()) {
        if (name.empty() || !HasValue(document.at(name))) {
            continue;
        }
        ++count;
        const std::string value = example.line.substr(example.line.find('=') + 2);
        EXPECT_EQ(Unquoted(value), document.at(name).byDefault) << name;
        const std::string line = example.line + "\n";
        std::string without = With(name, value);
        without.erase(without.find(line), line.size());
        EXPECT_EQ(ReadConfiguration(With(name, value)), ReadConfiguration(without)) << name;
    }
    EXPECT_GT(count, 15U);
}

/// "299s" or 299, for "5m" or "300" and -1.
std::string Moved(const std::string& text, bool isTime, int by) {
    return isTime ? '"' + std::to_string((*basics::DurationFrom(text) + seconds(by)).count()) + "s\""
                  : std::to_string(std::stoll(text) + by);
}

TEST(Documentation, OfRangesIsWhatIsHeldTo) {
    std::size_t count = 0;
    for (const auto& [name, said] : KeysOfTheDocument()) {
        const auto ends = testsupport::WholeMatch(said.range, "(\\w+) to (\\w+)( degrees Celsius| events)?");
        if (ends.empty()) {
            continue;
        }
        ++count;
        const bool isTime = ends[2].find_first_of("smhd") != std::string::npos;
        EXPECT_EQ(ProblemsWith(name, Moved(ends[1], isTime, 0)), "") << name;
        EXPECT_EQ(ProblemsWith(name, Moved(ends[2], isTime, 0)), "") << name;
        EXPECT_THAT(ProblemsWith(name, Moved(ends[2], isTime, 1)), HasSubstr(": it is a ")) << name;
        EXPECT_THAT(ProblemsWith(name, Moved(ends[1], isTime, -1)), HasSubstr(": it is a ")) << name;
    }
    EXPECT_GE(count, 15U);
}

TEST(Documentation, OfTheDocumentHasAnExampleThatIsAccepted) {
    std::string text;
    bool isExample = false;
    for (const std::string& line : LinesOf(Source("docs/watch.md"))) {
        isExample =
            line.starts_with("    [[channel]]") || (isExample && (line.empty() || line.starts_with("    ")));
        text += isExample ? line + "\n" : "";
    }
    EXPECT_EQ(ReadConfiguration(text).channels.size(), 2U);
}

}  // namespace
}  // namespace service::test::documentation
