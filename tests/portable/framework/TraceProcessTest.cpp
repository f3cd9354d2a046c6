#include "TraceSupport.h"

#include "qel/CTraceUtility.h"

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
constexpr int kWriters = 8;
constexpr int kChildren = 6;

// Of many lengths, so that a line that was torn or mixed with another one does not look like any of these.
// Children keep to lengths that take no memory to trace: the sanitizers' own allocators do not outlive a fork
// among threads.
std::string TextOf(int writer, int line) {
    const int longest = writer < kWriters ? 3000 : 800;
    const auto filling = static_cast<std::size_t>((line * 37 + writer * 101) % longest);
    return "writer " + std::to_string(writer) + " line " + std::to_string(line) + " " +
           std::string(filling, static_cast<char>('a' + writer)) + ".";
}

std::vector<std::string> TextsOf(int writer) {
    std::vector<std::string> texts;
    for (int line = 0; line < kLinesEach; ++line) {
        texts.push_back(TextOf(writer, line));
    }
    return texts;
}

void TraceAll(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        CTraceUtility::WriteDebug("msraid", 1, "%s", text.c_str());
    }
}

// Threads that begin together, and of which none ends before the last has begun: thread numbers come again.
std::vector<std::thread> StartThreads(std::atomic<int>& waiting) {
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([writer, &waiting] {
            const std::vector<std::string> texts = TextsOf(writer);
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            TraceAll(texts);
        });
    }
    return threads;
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
    std::atomic<int> waiting{kWriters};
    for (std::thread& thread : StartThreads(waiting)) {
        thread.join();
    }
    ExpectAllLinesOf(kWriters, file.Lines());
}

TEST(TraceProcessTest, LinesOfForkedChildrenStayWholeWhileThreadsTrace) {
    const TraceFile file;
    std::vector<std::vector<std::string>> childTexts;
    for (int child = 0; child < kChildren; ++child) {
        childTexts.push_back(TextsOf(kWriters + child));
    }
    std::atomic<int> waiting{kWriters + 1};
    std::vector<std::thread> threads = StartThreads(waiting);
    --waiting;
    std::vector<pid_t> children;
    for (const std::vector<std::string>& texts : childTexts) {
        const pid_t id = ::fork();
        if (id == 0) {
            TraceAll(texts);
            ::_exit(0);
        }
        children.push_back(id);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const pid_t child : children) {
        int status = -1;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    ExpectAllLinesOf(kWriters + kChildren, file.Lines());
}

TEST(TraceProcessTest, AChildMayTraceALineOfAnyLength) {
    const TraceFile file;
    const std::string large(100'000, 'c');
    ASSERT_EQ(RunInChild([&large] {
                  CTraceUtility::WriteDebug("msraid", 1, "%s", large.c_str());
                  return 0;
              }),
              0);
    ASSERT_EQ(file.Lines().size(), 1U);
    EXPECT_EQ(file.Lines()[0].text, large);
}

TEST(TraceProcessTest, AListenerHearsAllThreads) {
    RememberingListener listener;
    std::vector<std::thread> threads;
    for (int writer = 0; writer < kWriters; ++writer) {
        threads.emplace_back([writer] { TraceAll(TextsOf(writer)); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::string> texts;
    for (const RememberingListener::Heard& line : listener.Lines()) {
        texts.insert(line.text);
    }
    EXPECT_EQ(texts.size(), static_cast<std::size_t>(kWriters * kLinesEach));
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
