#include "Backroom.h"

#include "test_support/Waiting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <future>
#include <vector>

namespace doors::test {
namespace {

void WaitFor(Backroom& room, const std::vector<int>& told, std::size_t count) {
    while (told.size() < count) {
        pollfd news = {room.Number(), POLLIN, 0};
        ASSERT_EQ(::poll(&news, 1, 60'000), 1);
        room.TellWhatIsDone();
    }
}

TEST(BackroomTest, DoesOneAfterTheOtherAndTellsOnTheThreadThatAsked) {
    Backroom room;
    std::vector<int> done;
    std::vector<int> told;
    const auto here = std::this_thread::get_id();
    for (int number = 0; number < 10; ++number) {
        EXPECT_TRUE(room.Do(
            [&done, number, here] {
                done.push_back(number);
                EXPECT_NE(std::this_thread::get_id(), here);
            },
            [&told, number, here] {
                told.push_back(number);
                EXPECT_EQ(std::this_thread::get_id(), here);
            }));
    }
    WaitFor(room, told, 10);
    EXPECT_THAT(done, testing::ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(told, done);
}

TEST(BackroomTest, TakesNoMoreThanItHasRoomFor) {
    std::promise<void> gate;
    const std::shared_future<void> isOpen = gate.get_future().share();
    std::vector<int> told;
    Backroom room;
    std::size_t taken = 0;
    while (room.Do([isOpen] { isOpen.wait(); }, [&told] { told.push_back(0); })) {
        ASSERT_LT(++taken, 1000U);
    }
    EXPECT_GE(taken, 64U);
    gate.set_value();
    WaitFor(room, told, taken);
    EXPECT_TRUE(room.Do([] {}, [] {}));
}

TEST(BackroomTest, LeavesWhatHasNotBegunWhenItEnds) {
    std::promise<void> begun;
    std::promise<void> gate;
    bool isDone = false;
    auto room = std::make_unique<Backroom>();
    EXPECT_TRUE(room->Do(
        [&] {
            begun.set_value();
            gate.get_future().wait();
        },
        [] {}));
    auto token = std::make_shared<int>();
    const std::weak_ptr<int> waits = token;
    EXPECT_TRUE(room->Do([&isDone, kept = std::move(token)] { isDone = true; }, [] {}));
    begun.get_future().wait();
    std::thread ending([&room] { room.reset(); });
    EXPECT_TRUE(testsupport::ComesTrue([&waits] { return waits.expired(); }));
    gate.set_value();
    ending.join();
    EXPECT_FALSE(isDone);
}

}  // namespace
}  // namespace doors::test
