#include "qel/CZORBALT_SysService.h"
#include "qel/portable/CVersionLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace {

class AnnouncingService final : public CZORBALT_SysService {
  public:
    using CZORBALT_ServerService::writeDLLFileVersionLog;
    using CZORBALT_SysService::CZORBALT_SysService;
};

std::vector<CVersionLog::Entry> EntriesOf(const std::string& fileName) {
    const std::vector<CVersionLog::Entry> all = CVersionLog::Entries();
    std::vector<CVersionLog::Entry> found;
    std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                 [&fileName](const CVersionLog::Entry& entry) { return entry.fileName == fileName; });
    return found;
}

// A file name that nothing has announced yet: the log lasts as long as the process, tests may run again in
// it.
std::string NewName(const std::string& start) {
    static int count = 0;
    return start + std::to_string(++count) + ".so";
}

TEST(VersionLogTest, AServiceEntersAModuleUnderItsOwnVersion) {
    const std::string file = NewName("libAnnounced");
    AnnouncingService("sample", "maker", "3.1").writeDLLFileVersionLog(file.c_str());
    const auto entries = EntriesOf(file);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].category, "sample");
    EXPECT_EQ(entries[0].vendor, "maker");
    EXPECT_EQ(entries[0].version, "3.1");
}

TEST(VersionLogTest, AFileIsEnteredOnce) {
    const std::string file = NewName("libTwice");
    AnnouncingService("sample", "maker", "1").writeDLLFileVersionLog(file.c_str());
    const std::size_t before = CVersionLog::Entries().size();
    AnnouncingService("other", "other", "2").writeDLLFileVersionLog(file.c_str());
    EXPECT_EQ(CVersionLog::Entries().size(), before);
    const auto entries = EntriesOf(file);
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].version, "1") << "the first announcement stays";
}

TEST(VersionLogTest, FilesStandInTheOrderOfAnnouncementAndLetterCaseCounts) {
    const std::size_t before = CVersionLog::Entries().size();
    const std::string run = NewName("");
    for (const char* const start : {"libZ", "libA", "liba"}) {
        CVersionLog::Add({start + run, "c", "v", "1"});
    }
    const std::vector<CVersionLog::Entry> entries = CVersionLog::Entries();
    ASSERT_EQ(entries.size(), before + 3);
    EXPECT_EQ(entries[before].fileName, "libZ" + run);
    EXPECT_EQ(entries[before + 1].fileName, "libA" + run);
    EXPECT_EQ(entries[before + 2].fileName, "liba" + run);
}

TEST(VersionLogTest, ManyThreadsMayAnnounceAndAsk) {
    constexpr int kFiles = 50;
    const std::size_t before = CVersionLog::Entries().size();
    const std::string run = NewName("libThread");
    std::vector<std::thread> threads;
    for (int each = 0; each < 4; ++each) {
        threads.emplace_back([&run] {
            for (int file = 0; file < kFiles; ++file) {
                const std::string name = std::to_string(file) + run;
                CVersionLog::Add({name, "c", "v", "1"});
                EXPECT_EQ(EntriesOf(name).size(), 1U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(CVersionLog::Entries().size(), before + kFiles);
}

}  // namespace
