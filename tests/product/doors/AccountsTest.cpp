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
    AccountsTest() : m_Accounts(AccountList::Read(Listed("monitoring", "secret"))) {}
    Accounts m_Accounts;
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
    EXPECT_EQ(m_Accounts.WhoIs(first.token), "monitoring");
    EXPECT_EQ(m_Accounts.WhoIs(first.token + "0"), std::nullopt);
    EXPECT_EQ(m_Accounts.WhoIs(""), std::nullopt);
    EXPECT_THAT(m_Accounts.List(), SizeIs(2));
    EXPECT_TRUE(m_Accounts.End(first.session.id));
    EXPECT_FALSE(m_Accounts.End(first.session.id));
    EXPECT_EQ(m_Accounts.WhoIs(first.token), std::nullopt);
    EXPECT_EQ(m_Accounts.WhoIs(second.token), "monitoring");
}

TEST_F(AccountsTest, HaveNoMoreSessionsThanThereIsRoomFor) {
    const auto wrong = m_Accounts.Create("monitoring", "wrong");
    EXPECT_EQ(std::get<SessionRefusal>(wrong).why, SessionRefusal::Why::NotProved);
    std::size_t made = 0;
    while (std::holds_alternative<NewSession>(m_Accounts.Create("monitoring", "secret"))) {
        ASSERT_LT(++made, 1000U);
    }
    EXPECT_EQ(made, 64U);
    const auto refused = m_Accounts.Create("monitoring", "secret");
    EXPECT_EQ(std::get<SessionRefusal>(refused).why, SessionRefusal::Why::TooMany);
    EXPECT_TRUE(m_Accounts.End(m_Accounts.List().front().id));
    EXPECT_TRUE(std::holds_alternative<NewSession>(m_Accounts.Create("monitoring", "secret")));
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
