#include "Accounts.h"

#include "basics/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace doors::test {
namespace {

using namespace std::chrono_literals;
using redfish::NewSession;
using redfish::SessionRefusal;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

std::string RefusalOf(const std::string& text) {
    try {
        (void)AccountList::Read(text);
    } catch (const basics::Failure& error) {
        return error.what();
    }
    return "";
}

std::string Listed(const std::string& name, const std::string& password) {
    return name + ':' + HashOf(password) + '\n';
}

TEST(AccountList, IsReadLineByLine) {
    const AccountList list =
        AccountList::Read("# who may ask\n\n" + Listed("a.b-c_d@e", "x") + Listed("two", "y"));
    ASSERT_NE(list.HashOf("a.b-c_d@e"), nullptr);
    EXPECT_THAT(*list.HashOf("a.b-c_d@e"), testing::StartsWith("$y$"));
    EXPECT_NE(list.HashOf("two"), nullptr);
    EXPECT_EQ(list.HashOf("three"), nullptr);
    EXPECT_TRUE(AccountList::Read("").IsEmpty());
    EXPECT_FALSE(AccountList::Read(Listed("one", "x")).IsEmpty());
}

TEST(AccountList, SaysWhereItIsNone) {
    EXPECT_THAT(RefusalOf("# one\nsecret\n"),
                HasSubstr("line 2: the hash of secret is of no kind that is safe"));
    EXPECT_THAT(RefusalOf("name:secret\n"), HasSubstr("line 1: the hash of name"));
    EXPECT_THAT(RefusalOf("name:\n"), HasSubstr("line 1: the hash of name"));
    EXPECT_THAT(RefusalOf("a b:x\n"), HasSubstr("line 1: a name has"));
    EXPECT_THAT(RefusalOf(":x\n"), HasSubstr("line 1: a name has"));
    EXPECT_THAT(RefusalOf(Listed("one", "x") + Listed("one", "y")), HasSubstr("line 2: one is there twice"));
}

TEST(Hashes, HaveSaltsOfTheirOwn) {
    EXPECT_NE(HashOf("secret"), HashOf("secret"));
}

class AccountsTest : public testing::Test {
  protected:
    NewSession Make() {
        const auto made = m_Accounts.Create("monitoring", "secret");
        EXPECT_TRUE(std::holds_alternative<NewSession>(made));
        return std::holds_alternative<NewSession>(made) ? std::get<NewSession>(made) : NewSession();
    }
    [[nodiscard]] std::string WhoIs(std::string_view token) {
        const std::optional<redfish::Session> session = m_Accounts.WhoIs(token);
        return session ? session->account : "";
    }

    Accounts::Clock::time_point m_Now{1000s};
    Accounts m_Accounts{AccountList::Read(Listed("monitoring", "secret")), [this] { return m_Now; }};
};

TEST_F(AccountsTest, KnowPasswords) {
    EXPECT_TRUE(m_Accounts.AreNeeded());
    EXPECT_TRUE(m_Accounts.Check("monitoring", "secret"));
    for (const auto& [name, password] :
         std::vector<std::pair<std::string, std::string>>{{"monitoring", "Secret"},
                                                          {"monitoring", ""},
                                                          {"monitoring", "secret "},
                                                          {"monitoring", std::string("secret\0", 7)},
                                                          {"monitorin", "secret"},
                                                          {"", "secret"}}) {
        EXPECT_FALSE(m_Accounts.Check(name, password)) << name << ' ' << password;
        EXPECT_FALSE(m_Accounts.IsKnown(name, password)) << name << ' ' << password;
    }
}

TEST_F(AccountsTest, AreKnownOnceTheyAreProved) {
    EXPECT_FALSE(m_Accounts.IsKnown("monitoring", "secret"));
    EXPECT_TRUE(m_Accounts.Check("monitoring", "secret"));
    EXPECT_TRUE(m_Accounts.IsKnown("monitoring", "secret"));
    EXPECT_FALSE(m_Accounts.IsKnown("monitorin", "gsecret"));
    EXPECT_FALSE(m_Accounts.IsKnown("monitoring", "secre"));
}

TEST_F(AccountsTest, HaveSessionsWithTokens) {
    const auto made = m_Accounts.Create("monitoring", "secret");
    const NewSession& first = std::get<NewSession>(made);
    const auto another = m_Accounts.Create("monitoring", "secret");
    const NewSession& second = std::get<NewSession>(another);
    EXPECT_THAT(first.token, testing::MatchesRegex("[0-9a-f]{64}"));
    EXPECT_NE(first.token, second.token);
    EXPECT_NE(first.session.id, second.session.id);
    EXPECT_EQ(WhoIs(first.token), "monitoring");
    EXPECT_EQ(m_Accounts.WhoIs(first.token)->id, first.session.id);
    EXPECT_EQ(WhoIs(first.token + "0"), "");
    EXPECT_EQ(WhoIs(""), "");
    EXPECT_THAT(m_Accounts.List(), SizeIs(2));
    EXPECT_TRUE(m_Accounts.End(first.session.id));
    EXPECT_FALSE(m_Accounts.End(first.session.id));
    EXPECT_EQ(WhoIs(first.token), "");
    EXPECT_EQ(WhoIs(second.token), "monitoring");
}

TEST_F(AccountsTest, HaveSessionsThatEndWhenNobodyUsesThem) {
    const NewSession used = Make();
    const NewSession idle = Make();
    m_Now += 29min;
    EXPECT_EQ(WhoIs(used.token), "monitoring");
    EXPECT_TRUE(m_Accounts.Has(idle.session.id));
    m_Now += 1min;
    EXPECT_TRUE(m_Accounts.Has(used.session.id));
    EXPECT_FALSE(m_Accounts.Has(idle.session.id)) << "and to look did not make it last";
    EXPECT_THAT(m_Accounts.List(), SizeIs(1));
    EXPECT_EQ(WhoIs(idle.token), "");
    EXPECT_TRUE(m_Accounts.End(used.session.id));
    EXPECT_FALSE(m_Accounts.Has(used.session.id));
    EXPECT_FALSE(m_Accounts.Has(""));
}

TEST_F(AccountsTest, OfOneTheSessionIdleForLongestMakesWay) {
    const NewSession first = Make();
    m_Now += 1s;
    const NewSession second = Make();
    for (int more = 2; more < 16; ++more) {
        m_Now += 1s;
        (void)Make();
    }
    EXPECT_EQ(WhoIs(first.token), "monitoring") << "there is room for 16, and this one is idle no more";
    m_Now += 1s;
    (void)Make();
    EXPECT_THAT(m_Accounts.List(), SizeIs(16));
    EXPECT_TRUE(m_Accounts.Has(first.session.id));
    EXPECT_FALSE(m_Accounts.Has(second.session.id));
    EXPECT_EQ(WhoIs(second.token), "");
}

TEST(ManyAccounts, HaveNoMoreSessionsThanThereIsRoomFor) {
    const std::vector<std::string> names = {"a", "b", "c", "d", "e"};
    std::string list;
    for (const std::string& name : names) {
        list += Listed(name, "secret");
    }
    Accounts accounts(AccountList::Read(list));
    const auto wrong = accounts.Create("a", "wrong");
    EXPECT_EQ(std::get<SessionRefusal>(wrong).why, SessionRefusal::Why::NotProved);
    for (int each = 0; each < 16; ++each) {
        for (const char* const name : {"a", "b", "c", "d"}) {
            ASSERT_TRUE(std::holds_alternative<NewSession>(accounts.Create(name, "secret")));
        }
    }
    const auto refused = accounts.Create("e", "secret");
    EXPECT_EQ(std::get<SessionRefusal>(refused).why, SessionRefusal::Why::TooMany);
    EXPECT_TRUE(std::holds_alternative<NewSession>(accounts.Create("a", "secret"))) << "one of its own goes";
    EXPECT_THAT(accounts.List(), SizeIs(64));
    EXPECT_TRUE(accounts.End(accounts.List().front().id));
    EXPECT_TRUE(std::holds_alternative<NewSession>(accounts.Create("e", "secret")));
}

TEST(NoAccounts, AreNeededWithoutAList) {
    Accounts accounts(std::nullopt);
    EXPECT_FALSE(accounts.AreNeeded());
    EXPECT_FALSE(accounts.Check("root", ""));
}

TEST(PatienceTest, IsLostMoreWithEachFailure) {
    Patience patience;
    const Patience::Clock::time_point now{1000s};
    EXPECT_EQ(patience.WaitOf("a", now), 0s);
    patience.Failed("a", now);
    patience.Failed("a", now);
    EXPECT_EQ(patience.WaitOf("a", now), 0s) << "whoever mistypes may try again";
    std::chrono::seconds before{0};
    for (const std::chrono::seconds wait : {1s, 2s, 4s, 8s, 16s, 32s, 64s, 128s, 256s, 256s}) {
        patience.Failed("a", now + before);
        EXPECT_EQ(patience.WaitOf("a", now + before), wait);
        before += wait;
        EXPECT_EQ(patience.WaitOf("a", now + before), 0s);
    }
    EXPECT_EQ(patience.WaitOf("b", now), 0s);
    patience.Succeeded("a");
    patience.Failed("a", now + before);
    EXPECT_EQ(patience.WaitOf("a", now + before), 0s);
}

TEST(PatienceTest, ForgetsAfterAnHour) {
    Patience patience;
    const Patience::Clock::time_point now{1000s};
    for (int time = 0; time < 3; ++time) {
        patience.Failed("a", now);
    }
    patience.Failed("a", now + 1h);
    EXPECT_EQ(patience.WaitOf("a", now + 1h), 0s);
}

TEST(PatienceTest, IsThatWithANet) {
    Patience patience;
    const Patience::Clock::time_point now{1000s};
    for (const char* const address : {"2001:db8::1", "2001:db8::2", "2001:db8::ffff:1"}) {
        patience.Failed(address, now);
    }
    EXPECT_EQ(patience.WaitOf("2001:db8::3", now), 1s);
    EXPECT_EQ(patience.WaitOf("2001:db8:0:1::3", now), 0s);
    patience.Succeeded("2001:db8::4");
    EXPECT_EQ(patience.WaitOf("2001:db8::3", now), 0s);
}

}  // namespace
}  // namespace doors::test
