// The service, what it asks by, and what it tells by, killed at any moment: what it has stored is told, under
// one id, and nothing is left.

#include "test_support/Command.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>

namespace service::test::killing {
namespace {

using namespace testsupport;

using testing::IsEmpty;

using Ids = std::set<std::string>;

/// By the environment, for a run of length: SERVICE_KILL_POINTS=400 SERVICE_KILL_SEED=2.
unsigned NumberFrom(const char* variable, unsigned usual) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? usual : static_cast<unsigned>(std::stoul(text));
}

/// The first column of what a query gives.
std::vector<std::string> Ask(const std::string& path, const char* query) {
    std::vector<std::string> rows;
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    sqlite3_busy_timeout(database, 10'000);
    EXPECT_EQ(sqlite3_exec(
                  database, query,
                  [](void* to, int, char** values, char**) {
                      static_cast<std::vector<std::string>*>(to)->emplace_back(values[0]);
                      return 0;
                  },
                  &rows, nullptr),
              SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
    return rows;
}

/// Those that the others do not have.
Ids Missing(const Ids& ids, const Ids& others) {
    Ids missing;
    std::set_difference(ids.begin(), ids.end(), others.begin(), others.end(),
                        std::inserter(missing, missing.end()));
    return missing;
}

/// "began" of {"id":...,"kind":"began",...}.
std::string ValueOf(const std::string& event, const std::string& key) {
    const std::string mark = '"' + key + "\":\"";
    const std::size_t from = event.find(mark);
    return from == std::string::npos
               ? ""
               : event.substr(from + mark.size(), event.find('"', from + mark.size()) - from - mark.size());
}

class AKilledService : public testing::Test {
  protected:
    AKilledService() {
        // One write, so that an id is there as a whole or not at all.
        m_Folder.Write("service.toml",
                       "interval = \"1s\"\nsmart_interval = \"0\"\ncalm = \"0s\"\n[[channel]]\nname = "
                       "\"file\"\nkind = \"exec\"\nlevel = \"ok\"\nprogram = \"/bin/sh\"\n"
                       "arguments = [\"-c\", \"echo $MNGSRVRAID_ID >> " +
                           Told() + "\"]\n");
    }

    void TearDown() override { WaitUntilNothingIsLeft(); }

    [[nodiscard]] std::string Told() const { return m_Folder / "told"; }
    [[nodiscard]] std::string History() const { return m_Folder / "history.db"; }

    [[nodiscard]] std::unique_ptr<Running> Start(std::size_t killAt = 0) const {
        const char* const before = std::getenv("ASAN_OPTIONS");
        return Command{.words = {"--config", m_Folder / "service.toml", "--scenario",
                                 "watch/flaps/by-inquiry", "--history", History()},
                       .environment = {{"TMPDIR", m_Temporary.Path()},
                                       {"LD_PRELOAD", SERVICE_TEST_KILL_AT},
                                       {"KILL_AT_PROGRAM", SERVICE_TEST_PROGRAM},
                                       {"KILL_AT", std::to_string(killAt)},
                                       {"KILL_AT_COUNT", m_Folder / "calls"},
                                       {"ASAN_OPTIONS", std::string(before == nullptr ? "" : before) +
                                                            ":verify_asan_link_order=0"}},
                       .program = SERVICE_TEST_PROGRAM}
            .Start();
    }

    /// The server is asked again and again, until that has come true, or the service has ended.
    template <typename Condition>
    static void Hurry(const Running& service, Condition condition) {
        EXPECT_TRUE(ComesTrue([&] {
            if (HeedsSignals(service)) {
                ::kill(service.Process(), SIGUSR1);
            }
            return condition() || HasEnded(service);
        }));
    }

    /// Before, one would end it.
    [[nodiscard]] static bool HeedsSignals(const Running& service) {
        constexpr const char* kMark = "SigBlk:\t";
        std::ifstream file("/proc/" + std::to_string(service.Process()) + "/status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(kMark)) {
                return (std::stoull(line.substr(std::strlen(kMark)), nullptr, 16) >> (SIGUSR1 - 1) & 1) != 0;
            }
        }
        return false;
    }

    [[nodiscard]] static bool HasEnded(const Running& service) {
        const char state = Look(service.Process()).state;
        return state == 'Z' || state == '\0';
    }

    [[nodiscard]] Ids ToldIds() const {
        Ids ids;
        std::istringstream lines(std::filesystem::exists(Told()) ? ReadFile(Told()) : "");
        for (std::string line; std::getline(lines, line);) {
            ids.insert(line);
        }
        return ids;
    }

    [[nodiscard]] Ids StoredIds() const {
        const std::vector<std::string> ids = Ask(History(), "SELECT id FROM events");
        return {ids.begin(), ids.end()};
    }

    void WaitUntilNothingIsLeft() const {
        EXPECT_TRUE(ComesTrue([] {
            while (::waitpid(-1, nullptr, WNOHANG) > 0) {
            }
            return DescendantsOf(::getpid()).empty();
        })) << testing::PrintToString(DescendantsOf(::getpid()).size());
        EXPECT_THAT(m_Temporary.Names(), IsEmpty());
    }

    // Whatever was stored before is there, and whatever was told was stored.
    void ExpectNothingIsLost() {
        if (!std::filesystem::exists(History())) {
            EXPECT_THAT(ToldIds(), IsEmpty());
            return;
        }
        EXPECT_EQ(Ask(History(), "PRAGMA integrity_check"), std::vector<std::string>{"ok"});
        if (Ask(History(), "SELECT name FROM sqlite_schema WHERE name = 'events'").empty()) {
            EXPECT_THAT(ToldIds(), IsEmpty());
            return;
        }
        const Ids stored = StoredIds();
        EXPECT_THAT(Missing(m_Stored, stored), IsEmpty()) << "stored, and lost";
        EXPECT_THAT(Missing(ToldIds(), stored), IsEmpty()) << "told, and not stored";
        m_Stored = stored;
    }

    /// Whoever begins twice without having ended was told under two ids, and so was who comes or goes twice.
    void ExpectEachIsToldUnderOneId() const {
        std::map<std::string, std::string> last;
        for (const std::string& event : Ask(History(), "SELECT text FROM events ORDER BY number")) {
            const std::string kind = ValueOf(event, "kind");
            std::string about;
            for (const char* const key :
                 {"part_kind", "controller", "group", "part", "enclosure", "slot", "serial", "rule"}) {
                about += ValueOf(event, key) + '|';
            }
            if (kind == "began" || kind == "ended" || kind == "came" || kind == "went") {
                const std::string theme = (kind == "began" || kind == "ended" ? "alarm " : "part ") + about;
                EXPECT_NE(last[theme], kind) << event;
                last[theme] = kind;
            }
        }
        EXPECT_FALSE(last.empty());
    }

    const TempFolder m_Folder;
    const TemporaryDirectory m_Temporary;
    Ids m_Stored;
};

TEST_F(AKilledService, LosesNothingAndTellsNothingTwice) {
    constexpr unsigned kUsualPoints = 24;
    const unsigned points = NumberFrom("SERVICE_KILL_POINTS", kUsualPoints);
    const unsigned seed = NumberFrom("SERVICE_KILL_SEED", 1);
    std::cout << points << " points, seed " << seed << std::endl;
    std::mt19937 chance(seed);

    // How many calls a few inquiries take.
    constexpr std::size_t kEvents = 12;
    {
        const auto service = Start();
        Hurry(*service, [&] { return ToldIds().size() >= kEvents; });
        ::kill(service->Process(), SIGTERM);
        EXPECT_EQ(service->Wait().ExitStatus(), 0);
    }
    const std::size_t calls = std::stoul(m_Folder.Read("calls"));
    ASSERT_GT(calls, 300U);
    ExpectNothingIsLost();

    std::map<std::string, unsigned> killed;
    for (unsigned point = 0; point < points; ++point) {
        const bool isService = point % 2 == 0;
        const std::size_t call = isService ? 1 + chance() % calls : 0;
        SCOPED_TRACE("point " + std::to_string(point) + ", call " + std::to_string(call));
        const auto service = Start(call);
        if (isService) {
            Hurry(*service, [&] { return HasEnded(*service); });
            ++killed["the service"];
        } else {
            const bool isProgram = point % 4 == 1;
            pid_t victim = -1;
            std::string name;
            const auto isAlive = [](const Process& each) { return each.state != 'Z' && each.state != '\0'; };
            const auto choose = [&] {
                std::vector<Process> family = DescendantsOf(service->Process());
                std::erase_if(family, [&](const Process& each) {
                    return !isAlive(each) || isProgram != (each.words.find(Told()) != std::string::npos);
                });
                if (!family.empty()) {
                    const Process& chosen = family[chance() % family.size()];
                    victim = chosen.id;
                    name = isProgram ? "a channel's program" : "of an inquiry (" + chosen.name + ")";
                }
                return !family.empty();
            };
            do {  // It may have ended by itself meanwhile.
                Hurry(*service, choose);
                if (!isProgram) {
                    std::this_thread::sleep_for(std::chrono::microseconds(chance() % 3000));
                }
            } while (!HasEnded(*service) && (!isAlive(Look(victim)) || ::kill(victim, SIGKILL) != 0));
            ++killed[name];
            // It goes on, and ends in order.
            Hurry(*service, [&] {
                return !HasDescendant(service->Process(),
                                      [&](const Process& each) { return each.id == victim; });
            });
            EXPECT_FALSE(HasEnded(*service));
            ::kill(service->Process(), SIGTERM);
        }
        const Ended ended = service->Wait();
        EXPECT_EQ(ended.ExitStatus(), isService ? -1 : 0) << ended.err;
        WaitUntilNothingIsLeft();
        ExpectNothingIsLost();
        ASSERT_FALSE(HasFailure()) << ended.err;
    }
    for (const auto& [name, count] : killed) {
        std::cout << name << ": " << count << std::endl;
    }

    const auto service = Start();
    EXPECT_TRUE(ComesTrue([&] {
        return Ask(History(), "SELECT event FROM deliveries").empty() &&
               ToldIds().size() > m_Stored.size();  // of its own start, too
    }));
    ::kill(service->Process(), SIGTERM);
    EXPECT_EQ(service->Wait().ExitStatus(), 0);
    ExpectNothingIsLost();
    // The channel is not told that it was down; and what has happened just before the end waits for the next
    // start.
    const std::vector<std::string> owed = Ask(History(),
                                              "SELECT id FROM events WHERE text NOT LIKE '%the channel file "
                                              "%' AND number NOT IN (SELECT event FROM "
                                              "deliveries)");
    EXPECT_THAT(Missing({owed.begin(), owed.end()}, ToldIds()), IsEmpty()) << "stored, and never told";
    ExpectEachIsToldUnderOneId();
    std::cout << m_Stored.size() << " events" << std::endl;
}

}  // namespace
}  // namespace service::test::killing
