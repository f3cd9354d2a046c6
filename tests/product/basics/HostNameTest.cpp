#include "basics/HostName.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

namespace {

TEST(HostNameTest, IsWhatTheSystemSays) {
    std::array<char, 256> name{};
    ASSERT_EQ(0, ::gethostname(name.data(), name.size()));
    EXPECT_EQ(name.data(), basics::HostName());
}

}  // namespace
