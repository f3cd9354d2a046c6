#include "Calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace doors::test {
namespace {

using board::Call;
using board::Link;
using board::Outcome;
using testing::ElementsAre;

class CallsTest : public testing::Test {
  protected:
    CallsTest() : CallsTest(Link::MakePair()) {}
    explicit CallsTest(std::pair<Link, basics::Descriptor> pair)
        : m_Service(std::move(pair.first)),
          m_Link(std::move(pair.second), Link::End::Doors),
          m_Calls(m_Link) {}

    void Make(const Call& call, const std::string& who) {
        m_Calls.Make(call, [this, who](const Outcome& outcome) {
            m_Told.push_back(who + ": " + (outcome.failure.empty() ? *outcome.document : outcome.failure));
        });
    }
    std::vector<std::uint64_t> Heard() {
        std::vector<std::uint64_t> ids;
        while (const auto message = m_Service.Receive()) {
            ids.push_back(board::UnpackCall(message->bytes).id);
        }
        return ids;
    }

    Link m_Service, m_Link;
    Calls m_Calls;
    std::vector<std::string> m_Told;
};

const Call kInfo{.what = Call::What::GetInfo};

TEST_F(CallsTest, AreSharedByThoseWhoWantTheSame) {
    Make(kInfo, "one");
    Make(kInfo, "two");
    Call other = kInfo;
    other.appKey = "key";
    Make(other, "three");
    EXPECT_THAT(Heard(), ElementsAre(1, 2));
    m_Calls.Take({.id = 1, .document = "a"});
    EXPECT_THAT(m_Told, ElementsAre("one: a", "two: a"));
    m_Calls.Take({.id = 1, .document = "again"});
    m_Calls.Take({.id = 77, .document = "nobody's"});
    m_Calls.Take({.id = 2, .failure = "no authority"});
    EXPECT_THAT(m_Told, ElementsAre("one: a", "two: a", "three: no authority"));
    Make(kInfo, "four");
    EXPECT_THAT(Heard(), ElementsAre(3)) << "what is over is made again";
}

TEST_F(CallsTest, AreRefusedWhereTooManyWait) {
    for (std::int64_t slot = 0; slot < 40; ++slot) {
        Make({.what = Call::What::GetPDInfo, .slot = slot}, std::to_string(slot));
    }
    EXPECT_EQ(Heard().size(), 32U);
    EXPECT_EQ(m_Told.size(), 8U);
    EXPECT_EQ(m_Told.front(), "32: too many calls are waiting already");
}

TEST_F(CallsTest, FailAtOnceWhereTheServiceIsGone) {
    { const Link gone = std::move(m_Service); }
    Make(kInfo, "one");
    EXPECT_THAT(m_Told, ElementsAre("one: too many calls are waiting already"));
}

TEST_F(CallsTest, MayBeMadeByWhoeverHearsOfOne) {
    m_Calls.Make(kInfo, [this](const Outcome&) { Make(kInfo, "next"); });
    (void)Heard();
    m_Calls.Take({.id = 1, .document = "a"});
    EXPECT_THAT(Heard(), ElementsAre(2));
}

}  // namespace
}  // namespace doors::test
