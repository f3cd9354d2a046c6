#include "Networks.h"

#include <gtest/gtest.h>

namespace doors::test {
namespace {

TEST(Networks, ContainTheirAddresses) {
    const auto networks = Networks::From({"192.0.2.0/25", "198.51.100.7", "2001:db8::/33", "::1"});
    ASSERT_TRUE(networks);
    for (const char* const address : {"192.0.2.0", "192.0.2.127", "198.51.100.7", "2001:db8::1",
                                      "2001:db8:7fff:ffff::", "::1", "::ffff:192.0.2.1"}) {
        EXPECT_TRUE(networks->Contain(address)) << address;
    }
    for (const char* const address : {"192.0.2.128", "192.0.3.0", "198.51.100.6", "2001:db8:8000::", "::2",
                                      "", "localhost", "::c000:201"}) {
        EXPECT_FALSE(networks->Contain(address)) << address;
    }
    EXPECT_TRUE(Networks::From({"0.0.0.0/0"})->Contain("203.0.113.9"));
    EXPECT_FALSE(Networks::From({"0.0.0.0/0"})->Contain("2001:db8::1"));
    EXPECT_FALSE(Networks::From({})->Contain("127.0.0.1"));
}

TEST(Networks, AreNothingElse) {
    for (const char* const text : {"", "host", "192.0.2", "192.0.2.0/33", "192.0.2.0/", "192.0.2.0/-1",
                                   "::/129", "192.0.2.0/8x", "/8"}) {
        EXPECT_FALSE(Networks::From({"127.0.0.1", text})) << text;
    }
}

}  // namespace
}  // namespace doors::test
