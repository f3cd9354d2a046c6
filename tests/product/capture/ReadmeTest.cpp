#include "Readme.h"

#include <gmock/gmock.h>

namespace capture::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(Readme, TellsWhoseServerItIs) {
    const std::string text = ReadmeText({.host = "storage7",
                                         .scenario = "my/server",
                                         .controllers = {"Gate SR-8e", "Gate\nSR-4i"},
                                         .versions = {"4.1"},
                                         .drives = 3});
    EXPECT_TRUE(IsReadmeOfCapture(text));
    EXPECT_THAT(text, AllOf(HasSubstr("from the scenario my/server, 20"), HasSubstr("\n- Host: storage7\n"),
                            HasSubstr("\n- Controllers: Gate SR-8e, Gate\\nSR-4i\n"),
                            HasSubstr("\n- Drives asked for: 3\n"), HasSubstr("\n- Not redacted: "),
                            HasSubstr("\n- Complete: ")));
    EXPECT_THAT(ReadmeText({}), AllOf(HasSubstr("from this server's tool, 20"), Not(HasSubstr("Host")),
                                      HasSubstr("- Controllers: not known\n")));
}

TEST(Readme, IsNotCompleteWhereSomethingFailedOrIsMissing) {
    const auto isComplete = [](const Account& account) {
        const std::string text = ReadmeText(account);
        EXPECT_NE(text.find("- Complete: ") == text.npos, text.find("- Not complete: ") == text.npos);
        return text.find("- Complete: ") != text.npos;
    };
    EXPECT_TRUE(isComplete({.changes = {"a text moved"}}));
    EXPECT_FALSE(isComplete({.failures = {"get-info failed"}}));
    EXPECT_FALSE(isComplete({.missing = {"a drive"}}));
}

/// What a redacted capture tells of a failure.
std::string Told(const std::string& failure, const std::vector<std::string>& paths = {}) {
    const std::string text =
        WithoutNames(ReadmeText({.scenario = "/home/bob/acme, west", .failures = {failure}}), paths);
    const std::string title = "## What failed\n\n- ";
    const std::size_t begin = text.find(title) + title.size();
    EXPECT_THAT(text.substr(0, begin), AllOf(HasSubstr("from a scenario, 20"), Not(HasSubstr("acme")),
                                             HasSubstr("\n- Redacted: "), Not(HasSubstr("Not redacted"))));
    return text.substr(begin, text.find('\n', begin) - begin);
}

TEST(Readme, RedactedOneNamesNoScenarioAndNoPath) {
    EXPECT_EQ(Told("look at the scenario /home/bob/acme, west, and at what"),
              "look at the scenario, and at what");
    EXPECT_EQ(Told("written in /home/bob/x: get the right to, or"),
              "written in (path): get the right to, or");
    EXPECT_EQ(Told("(/a/b), \"/c/d\" '/e' `/f/g`; /h/i; /j."),
              "((path)), \"(path)\" '(path)' `(path)`; (path); (path).");
    EXPECT_EQ(Told("in ../acme/x and ~/y or ./z"), "in (path) and (path) or (path)");
    EXPECT_EQ(Told("in /home/bob smith/acme east/x is not"), "in (path) is not");
    EXPECT_EQ(Told("in /home/bob smith: no", {"/home/bob smith"}), "in (path): no");
}

TEST(Readme, RedactedOneKeepsWhatIsTheSameEverywhere) {
    for (const char* const failure : {"install it in /opt/zorbalt/vdk, or name", "24/7 and N/A and a / b",
                                      "(vdkcli -pdinfo -pd[252:1] -a0)"}) {
        EXPECT_EQ(Told(failure), failure);
    }
}

TEST(Readme, SomebodysOwnIsLeft) {
    const std::string own = "# My server\n\nfrom the scenario x, 1.\n- Not redacted: /dev/sda\n";
    EXPECT_EQ(WithoutNames(own, {"/dev"}), own);
}

TEST(Readme, OfARedactedCaptureStaysAsItIs) {
    const std::string once =
        WithoutNames(ReadmeText({.scenario = "x", .failures = {"in /a/b: the scenario x"}}), {});
    EXPECT_EQ(WithoutNames(once, {}), once);
}

Replacements List(std::initializer_list<Redaction::Replacement> list) {
    return list;
}

TEST(Readme, ListsWhatWasReplaced) {
    const Replacements list = List({{{Kind::Serial, 1}, 6}, {{Kind::Serial, 12}, 3}, {{Kind::Mail, 1}, 1}});
    const std::string text = PutList({"# Mine\n", list});
    EXPECT_EQ(text,
              "# Mine\n"
              "\n## What was replaced\n\n"
              "- 2 serial numbers, in 9 places\n"
              "- 1 mail address, in 1 place\n"
              "\n"
              "    serial-0001  6\n"
              "    serial-0012  3\n"
              "    mail-0001  1\n");
    const ListedReadme taken = TakeList(text);
    EXPECT_EQ(taken.text, "# Mine\n");
    EXPECT_EQ(PutList(taken), text);
    EXPECT_EQ(TakeList(text + "\n## More\n").text, "# Mine\n\n## More\n");
    EXPECT_EQ(PutList({"# Mine\n", {}}),
              "# Mine\n\n## What was replaced\n\n- nothing: no such value was found\n");
}

TEST(Readme, TakesNothingElseForTheList) {
    const ListedReadme taken = TakeList(
        "# Mine\n    serial-0001  6\n\n## What was replaced\n\n- serial-0002  3\n    serial-0003 x\n    "
        "other-0004  1\n"
        "    serial-5  1\n    serial-0006  1  2\n    wwn-0007  4\n");
    ASSERT_EQ(taken.list.size(), 1U);
    EXPECT_EQ(WordFor(taken.list[0].word), "wwn-0007");
    EXPECT_EQ(taken.list[0].places, 4U);
    EXPECT_TRUE(TakeList("# Mine\n").list.empty());
}

TEST(Readme, ListForScreensIsShort) {
    EXPECT_EQ(ListForScreen({}), "replaced: nothing\n");
    EXPECT_EQ(ListForScreen(List({{{Kind::Host, 1}, 2}})),
              "replaced: 1 host name, in 2 places\n    host-0001  2\n");
    Replacements many;
    for (std::size_t number = 1; number <= 5000; ++number) {
        many.push_back({{Kind::Serial, number}, 1});
    }
    EXPECT_EQ(ListForScreen(many),
              "replaced: 5000 serial numbers, in 5000 places\neach of them is listed in README.md\n");
}

TEST(Readme, ListsOfTwoRedactionsBecomeOne) {
    const Replacements merged =
        Merged(List({{{Kind::Serial, 1}, 6}, {{Kind::Word, 1}, 2}}), List({{{Kind::Serial, 2}, 1}}));
    ASSERT_EQ(merged.size(), 3U);
    EXPECT_EQ(WordFor(merged[1].word), "serial-0002");
    EXPECT_EQ(WordFor(merged[2].word), "word-0001");
}

}  // namespace
}  // namespace capture::test
