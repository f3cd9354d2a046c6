#include "basics/OwnFolder.h"

#include <gtest/gtest.h>

namespace {

TEST(OwnFolderTest, IsThatOfTheProgram) {
    EXPECT_EQ(basics::OwnFolder(), std::filesystem::read_symlink("/proc/self/exe").parent_path());
}

}  // namespace
