#include "ItemMemory.h"

#include "CountedNew.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace convlib {
namespace {

constexpr std::size_t kSize = 104;
constexpr std::size_t kMany = 300'000;  // Enough for large pages.

void GiveAll(ItemMemory& memory, const std::vector<void*>& rooms) {
    for (void* const room : rooms) {
        memory.Give(room);
    }
}

TEST(ItemMemory, RoomsStandApartAndAreAligned) {
    ItemMemory memory(kSize);
    std::vector<void*> rooms;
    std::generate_n(std::back_inserter(rooms), kMany, [&memory] { return memory.Take(); });
    for (void* const room : rooms) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(room) % alignof(std::string), 0U);
        std::memset(room, 'x', kSize);
    }
    std::sort(rooms.begin(), rooms.end());
    const auto near =
        std::adjacent_find(rooms.begin(), rooms.end(), [](const void* first, const void* second) {
            return static_cast<const char*>(second) - static_cast<const char*>(first) < std::ptrdiff_t{kSize};
        });
    EXPECT_EQ(near, rooms.end());
    GiveAll(memory, rooms);
}

TEST(ItemMemory, ARoomGivenBackIsTakenAgainFirst) {
    ItemMemory memory(kSize);
    const std::vector<void*> rooms = {memory.Take(), memory.Take(), memory.Take()};
    memory.Give(rooms[0]);
    memory.Give(rooms[1]);
    EXPECT_EQ(memory.Take(), rooms[1]);
    EXPECT_EQ(memory.Take(), rooms[0]);
    GiveAll(memory, rooms);
}

TEST(ItemMemory, NothingIsKeptWhenAllIsGivenBack) {
    ItemMemory memory(kSize);
    const countednew::Watch watch;
    void* const first = memory.Take();
    memory.Give(memory.Take());
    memory.Give(memory.Take());
    EXPECT_EQ(watch.Allocations(), 1U);
    memory.Give(first);
    memory.Give(memory.Take());
    EXPECT_EQ(watch.Allocations(), 2U);
}

TEST(ItemMemory, LivesOnWhereverMemoryEnds) {
    ItemMemory memory(kSize);
    std::vector<void*> rooms;
    rooms.reserve(kMany);
    std::size_t failures = 0;
    while (rooms.size() < kMany) {
        const countednew::Watch watch(0);
        try {
            rooms.push_back(memory.Take());
        } catch (const std::bad_alloc&) {
            ++failures;
            rooms.push_back(memory.Take());
        }
    }
    EXPECT_GT(failures, 0U);
    GiveAll(memory, rooms);
}

TEST(ItemMemory, ServesManyThreads) {
    ItemMemory memory(kSize);
    const auto work = [&memory](char mark) {
        for (int round = 0; round < 50; ++round) {
            std::vector<void*> rooms;
            for (int number = 0; number < 100; ++number) {
                rooms.push_back(std::memset(memory.Take(), mark, kSize));
            }
            for (void* const room : rooms) {
                const char* const bytes = static_cast<const char*>(room);
                EXPECT_TRUE(std::all_of(bytes, bytes + kSize, [mark](char byte) { return byte == mark; }));
                memory.Give(room);
            }
        }
    };
    std::vector<std::thread> threads;
    for (const char mark : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back(work, mark);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
}  // namespace convlib
