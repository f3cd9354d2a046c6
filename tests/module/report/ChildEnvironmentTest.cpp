#include "ChildEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;

/// Entries that a tool run gets from a process with the given ones.
std::vector<std::string> EntriesFrom(std::vector<std::string> before) {
    std::vector<char*> entries;
    for (std::string& entry : before) {
        entries.push_back(entry.data());
    }
    entries.push_back(nullptr);
    char** const own = environ;
    environ = entries.data();
    ChildEnvironment environment("/tool");
    environ = own;
    std::vector<std::string> texts;
    for (char** entry = environment.Entries(); *entry != nullptr; ++entry) {
        texts.emplace_back(*entry);
    }
    return texts;
}

TEST(ChildEnvironmentTest, ThePathIsReplacedInItsPlaceAndStandsThereOnce) {
    EXPECT_THAT(EntriesFrom({"A=1", "LD_LIBRARY_PATH=/a:/b", "B=2"}),
                ElementsAre("A=1", "LD_LIBRARY_PATH=/a:/b:/tool", "B=2"));
}

TEST(ChildEnvironmentTest, AMissingPathIsAddedBehindTheRest) {
    EXPECT_THAT(EntriesFrom({"A=1", "LD_LIBRARY_PATHS=/a"}),
                ElementsAre("A=1", "LD_LIBRARY_PATHS=/a", "LD_LIBRARY_PATH=/tool"));
    EXPECT_THAT(EntriesFrom({}), ElementsAre("LD_LIBRARY_PATH=/tool"));
}

TEST(ChildEnvironmentTest, OfAPathThatIsThereTwiceOnlyTheFirstIsReplaced) {
    EXPECT_THAT(EntriesFrom({"LD_LIBRARY_PATH=", "A=1", "LD_LIBRARY_PATH=/b"}),
                ElementsAre("LD_LIBRARY_PATH=:/tool", "A=1", "LD_LIBRARY_PATH=/b"));
}

}  // namespace
