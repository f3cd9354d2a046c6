// Hosts with many open files, and what the tool inherits of them.
#include "Remains.h"
#include "UnkindHostTest.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <thread>

namespace unkindhost {
namespace {

using testing::Each;
using testing::Field;
using testing::SizeIs;

using DescriptorTest = UnkindHostTest;

int OpenNull(int flags = O_CLOEXEC) {
    return ::open("/dev/null", O_RDWR | flags);
}

void SetLimit(rlim_t descriptors) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = descriptors;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

// Closes them when it goes.
class ManyDescriptors final {
  public:
    /// Opens until there are so many, or no more are to be had.
    explicit ManyDescriptors(std::size_t count) {
        for (int number = 0; m_Numbers.size() < count && (number = OpenNull()) >= 0;) {
            m_Numbers.push_back(number);
        }
    }
    ~ManyDescriptors() { Free(m_Numbers.size()); }
    ManyDescriptors(const ManyDescriptors&) = delete;
    ManyDescriptors& operator=(const ManyDescriptors&) = delete;

    void Free(std::size_t count) {
        for (; count > 0 && !m_Numbers.empty(); --count) {
            ::close(m_Numbers.back());
            m_Numbers.pop_back();
        }
    }
    [[nodiscard]] int Highest() const { return m_Numbers.back(); }

  private:
    std::vector<int> m_Numbers;
};

TEST_F(DescriptorTest, NumbersBeyondAThousandWork) {
    const std::string seen = InHost([](Host& host) {
        SetLimit(4096);
        const ManyDescriptors many(3000);
        EXPECT_GT(many.Highest(), FD_SETSIZE);
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(DescriptorTest, WhenNoneIsLeftACallFailsAndWorksAgainWhenSomeAre) {
    if (kHasAddressSanitizer) {
        GTEST_SKIP() << "the sanitizers look at pointers through descriptors of their own";
    }
    const std::string seen = InHost([](Host& host) {
        SetLimit(64);
        ManyDescriptors many(64);
        const std::string text = host.Ask();
        many.Free(64);
        return text + "\n" + host.Ask();
    });
    const std::string failed = "status 00000000, return value 80000001, MSGID_MNGSRV_RAID_0001_F 05";
    EXPECT_EQ(seen, failed + "\n" + failed + "\n" + KindAnswer());
}

TEST_F(DescriptorTest, WithFewLeftACallWorksOrFailsWithAReason) {
    if (kHasAddressSanitizer) {
        GTEST_SKIP() << "the sanitizers look at pointers through descriptors of their own";
    }
    const std::string seen = InHost([](Host& host) {
        SetLimit(64);
        ManyDescriptors many(64);
        std::size_t free = 0;
        std::string answer;
        for (; free < 16 && answer.find("<?xml") != 0; ++free) {
            answer = host.Ask();
            many.Free(1);
        }
        // A result file, and the library that is mapped from its own.
        return (free <= 4 ? answer : "works only with " + std::to_string(free));
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(DescriptorTest, TheToolHasItsStreamsInTheResultFileAndNothingOfTheModules) {
    const std::string root = m_Root / "tmp/MSRAID";
    const std::string seen = InHost([&](Host& host) {
        const StandIn& standIn = host.UseStandIn();
        standIn.TakeNotes();
        // What the test program itself may have inherited.
        std::string inherited;
        for (const int number : OpenDescriptors()) {
            if ((::fcntl(number, F_GETFD) & FD_CLOEXEC) == 0) {
                inherited += (inherited.empty() ? "" : ",") + std::to_string(number);
            }
        }
        const std::string text = host.Ask();
        EXPECT_THAT(standIn.Notes(), SizeIs(testing::Ge(7U)));
        EXPECT_THAT(standIn.Notes(), Each(Field(&StandIn::Note::descriptors, inherited)));
        EXPECT_THAT(standIn.Notes(), Each(Field(&StandIn::Note::output, testing::StartsWith(root))));
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(DescriptorTest, TheToolInheritsWhatTheHostLetsItInherit) {
    const std::string seen = InHost([](Host& host) {
        const StandIn& standIn = host.UseStandIn();
        standIn.TakeNotes();
        const int null = OpenNull();
        const int inherited = ::fcntl(null, F_DUPFD, 700);
        const int kept = ::fcntl(null, F_DUPFD_CLOEXEC, 800);
        std::string text = host.Ask();
        EXPECT_THAT(standIn.Notes(), Each(Field(&StandIn::Note::descriptors, testing::EndsWith(",700"))));
        for (const int number : {null, inherited, kept}) {
            ::close(number);
        }
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

}  // namespace
}  // namespace unkindhost
