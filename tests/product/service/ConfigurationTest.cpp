#include "Configuration.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace service::test {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;

std::vector<std::string> ProblemsOf(const std::string& text) {
    try {
        (void)ReadConfiguration(text);
    } catch (const ConfigurationError& error) {
        return error.Problems();
    }
    return {};
}

TEST(Configuration, HasDefaults) {
    const Configuration configuration = ReadConfiguration("# nothing\n");
    EXPECT_EQ(configuration.interval, minutes(5));
    EXPECT_EQ(configuration.smartInterval, hours(6));
    EXPECT_FALSE(configuration.asksSleeping);
    EXPECT_EQ(configuration.timeLimit, seconds(50));
    EXPECT_EQ(configuration.host, "");
    EXPECT_EQ(configuration.history, "/var/lib/mngsrvraid/history.db");
    EXPECT_FALSE(configuration.expect);
    EXPECT_FALSE(configuration.limits.temperature);
    EXPECT_EQ(configuration.rules.failuresToTell, 3U);
    EXPECT_EQ(configuration.rules.calm, minutes(10));
    EXPECT_EQ(configuration.rules.reminder, hours(24));
    EXPECT_EQ(configuration.rules.mediaErrors, 10U);
}

TEST(Configuration, SaysEverything) {
    const Configuration configuration = ReadConfiguration(R"(
interval = "90s"
smart_interval = "0"
smart_of_sleeping = true
timeout = "2m"
host = "storage7"
history = "/srv/history.db"
expect = "/etc/mngsrvraid/expect.json"
app_key = "secret"
failures_to_tell = 5
calm = "0s"
reminder = "12h"

[limits]
max_temperature = 50
max_media_errors = 20
max_media_error_growth = 5
min_spares = 1

[growth]
media_errors = 1
other_errors = 2
predictive_failures = 3
)");
    EXPECT_EQ(configuration.interval, seconds(90));
    EXPECT_EQ(configuration.smartInterval, seconds(0));
    EXPECT_TRUE(configuration.asksSleeping);
    EXPECT_EQ(configuration.timeLimit, minutes(2));
    EXPECT_EQ(configuration.host, "storage7");
    EXPECT_EQ(configuration.history, "/srv/history.db");
    EXPECT_EQ(configuration.expect, "/etc/mngsrvraid/expect.json");
    EXPECT_EQ(configuration.appKey, "secret");
    EXPECT_EQ(configuration.rules.failuresToTell, 5U);
    EXPECT_EQ(configuration.rules.calm, seconds(0));
    EXPECT_EQ(configuration.rules.reminder, hours(12));
    EXPECT_EQ(configuration.limits.temperature, 50);
    EXPECT_EQ(configuration.limits.mediaErrors, 20U);
    EXPECT_EQ(configuration.limits.mediaErrorGrowth, 5U);
    EXPECT_EQ(configuration.limits.spares, 1U);
    EXPECT_EQ(configuration.rules.mediaErrors, 1U);
    EXPECT_EQ(configuration.rules.otherErrors, 2U);
    EXPECT_EQ(configuration.rules.predictiveFailures, 3U);
}

TEST(Configuration, NamesTheLineAndWhatIsWrong) {
    const std::pair<const char*, const char*> kSlips[] = {
        {"interval = \"5 minutes\"",
         "line 1: interval: it is a time such as \"90s\", \"5m\", \"6h\" or \"1d\", from 1s to 1d"},
        {"\ninterval = 300",
         "line 2: interval: it is a time such as \"90s\", \"5m\", \"6h\" or \"1d\", from 1s to 1d"},
        {"interval = \"0s\"",
         "line 1: interval: it is a time such as \"90s\", \"5m\", \"6h\" or \"1d\", from 1s to 1d"},
        {"failures_to_tell = 0", "line 1: failures_to_tell: it is a whole number from 1 to 1000"},
        {"failures_to_tell = -3", "line 1: failures_to_tell: it is a whole number from 1 to 1000"},
        {"failures_to_tell = \"3\"", "line 1: failures_to_tell: it is a whole number from 1 to 1000"},
        {"smart_of_sleeping = 1", "line 1: smart_of_sleeping: it is true or false"},
        {"host = \"\"", "line 1: host: it is a text in quotes, and not empty"},
        {"histroy = \"a\"", "line 1: histroy: there is no such key; did you mean history?"},
        {"\"a\\nb\" = 1", "line 1: a\\nb: there is no such key"},
        {"limits = 5", "line 1: limits: it is a section, [limits]"},
        {"[limits]\nmax_temperatur = 50",
         "line 2: limits.max_temperatur: there is no such key; did you mean max_temperature?"},
        {"[limits]\n\nmax_temperature = 500",
         "line 3: limits.max_temperature: it is a whole number from 1 to 200"},
        {"\n\n[limits]\nmax_media_error_growth = 5",
         "line 3: limits: max_media_error_growth needs to know since when: expect"},
    };
    for (const auto& [text, words] : kSlips) {
        EXPECT_THAT(ProblemsOf(text), ElementsAre(words)) << text;
    }
}

TEST(Configuration, NamesWhatIsWrongInOneLine) {
    EXPECT_THAT(
        ProblemsOf("[[channel]]\nkind = \"mail\"\nto = [\"a\\nb\"]\n"),
        ElementsAre("line 3: channel.to: each is an address such as storage@example.org, without a name; "
                    "\"a\\nb\" is none"));
}

TEST(Configuration, NamesTheLineOfWhatIsNoToml) {
    const std::vector<std::string> problems = ProblemsOf("interval = \"5m\"\n\nhost = storage7\n");
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_THAT(problems.front(), testing::StartsWith("line 3: "));
}

TEST(Configuration, NamesEverythingAtOnce) {
    EXPECT_EQ(ProblemsOf("interval = 1\nhost = 2\nnothing = 3\n[growth]\nmedia_errors = \"a\"\n").size(), 4U);
}

}  // namespace
}  // namespace service::test
