#include "qel/CTraceUtility.h"
#include "tests/framework/TraceSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using qel::test::RememberingListener;
using qel::test::RunInChild;
using qel::test::TraceFile;
using qel::test::WrittenLine;

constexpr int kLinesEach = 300;
constexpr int kThreads = 8;
constexpr int kChildren = 6;

// Of many lengths, so that a line that was torn or mixed with another one does not look like any of these.
std::string TextOf(int writer, int line) {
    const auto filling = static_cast<std::size_t>((line * 37 + writer * 101) % 3000);
    return "writer " + std::to_string(writer) + " line " + std::to_string(line) + " " +
           std::string(filling, static_cast<char>('a' + writer)) + ".";
}

void TraceAll(int writer) {
    for (int line = 0; line < kLinesEach; ++line) {
        CTraceUtility::WriteDebug("msraid", 1, "%s", TextOf(writer, line).c_str());
    }
}

// Every writer's lines are there, whole and in its order, and its thread field is its own.
void ExpectAllLinesOf(int writers, const std::vector<WrittenLine>& lines) {
    std::map<std::string, int> writerOfThread;
    std::map<int, int> nextLine;
    for (const WrittenLine& line : lines) {
        const int writer = std::atoi(line.text.c_str() + std::string("writer ").size());
        EXPECT_EQ(line.text, TextOf(writer, nextLine[writer]++));
        EXPECT_EQ(writerOfThread.try_emplace(line.thread, writer).first->second, writer);
    }
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(writers * kLinesEach));
    EXPECT_EQ(nextLine.size(), static_cast<std::size_t>(writers));
}

TEST(TraceProcessTest, LinesOfManyThreadsStayWhole) {
    const TraceFile file;
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kThreads; ++writer) {
        threads.emplace_back([writer, &waiting] {
            // All of them at once, and none ends before the last begins: thread numbers come again.
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            TraceAll(writer);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    ExpectAllLinesOf(kThreads, file.Lines());
}

TEST(TraceProcessTest, LinesOfForkedChildrenStayWholeWhileThreadsTrace) {
    const TraceFile file;
    std::atomic<int> waiting{kThreads + 1};
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kThreads; ++writer) {
        threads.emplace_back([writer, &waiting] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            TraceAll(writer);
        });
    }
    --waiting;
    std::vector<pid_t> children;
    for (int child = 0; child < kChildren; ++child) {
        const pid_t id = ::fork();
        ASSERT_GE(id, 0);
        if (id == 0) {
            TraceAll(kThreads + child);
            ::_exit(0);
        }
        children.push_back(id);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ExpectAllLinesOf(kThreads + kChildren, file.Lines());
}

TEST(TraceProcessTest, AListenerHearsAllThreads) {
    RememberingListener listener;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kThreads; ++writer) {
        threads.emplace_back(TraceAll, writer);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::string> texts;
    for (const RememberingListener::Heard& line : listener.Lines()) {
        texts.insert(line.text);
    }
    EXPECT_EQ(texts.size(), static_cast<std::size_t>(kThreads * kLinesEach));
    EXPECT_EQ(texts.count(TextOf(3, 17)), 1U);
}

TEST(TraceProcessTest, AListenerIsNotCalledInAForkedChild) {
    const TraceFile file;
    RememberingListener listener;
    CTraceUtility::WriteDebug("msraid", 1, "before");
    const int heardInChild = RunInChild([&listener] {
        CTraceUtility::WriteDebug("msraid", 1, "child");
        CTraceUtility::WriteTrace("msraid", "MSGID_1", "child");
        return static_cast<int>(listener.Lines().size());
    });
    EXPECT_EQ(heardInChild, 1) << "the line from before the fork and no other";
    CTraceUtility::WriteDebug("msraid", 1, "after");
    EXPECT_EQ(listener.Lines().size(), 2U);
    EXPECT_EQ(file.Lines().size(), 4U) << "the file has the child's lines too";
}

TEST(TraceProcessTest, AChildsLineIsNotFormattedForTheParentsListener) {
    const RememberingListener listener;
    const auto formattedLength = [] {
        int formatted = 0;
        CTraceUtility::WriteDebug("msraid", 1, "abc%n", &formatted);
        return formatted;
    };
    EXPECT_EQ(formattedLength(), 3);
    EXPECT_EQ(RunInChild(formattedLength), 0);
}

TEST(TraceProcessTest, AChildBearsItsOwnThreadNumber) {
    const TraceFile file;
    CTraceUtility::WriteDebug("msraid", 1, "parent");
    ASSERT_EQ(RunInChild([] {
                  CTraceUtility::WriteDebug("msraid", 1, "%d", static_cast<int>(::getpid()));
                  return 0;
              }),
              0);
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[1].thread, lines[1].text);
    EXPECT_NE(lines[0].thread, lines[1].thread);
}

}  // namespace
