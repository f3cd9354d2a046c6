#include "Configuration.h"

#include <gtest/gtest.h>

namespace service::test {
namespace {

TEST(Addresses, AreOfThisMachineOrEncrypted) {
    const std::optional<Address> plain = AddressFrom("127.0.0.1:8282");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->host, "127.0.0.1");
    EXPECT_EQ(plain->port, 8282);
    EXPECT_FALSE(plain->isEncrypted);
    EXPECT_FALSE(AddressFrom("http://127.9.9.9:1")->isEncrypted);
    EXPECT_FALSE(AddressFrom("[::1]:8282")->isEncrypted);
    EXPECT_EQ(AddressFrom("[::1]:8282")->host, "::1");
    EXPECT_TRUE(AddressFrom("https://127.0.0.1:8283")->isEncrypted);
    EXPECT_TRUE(AddressFrom("0.0.0.0:8443")->isEncrypted);
    EXPECT_TRUE(AddressFrom("[::]:65535")->isEncrypted);
    EXPECT_TRUE(AddressFrom("https://192.0.2.1:443")->isEncrypted);
    EXPECT_TRUE(AddressFrom("[::ffff:127.0.0.1]:1")->isEncrypted) << "rather too often than too seldom";
}

TEST(Addresses, MayBeSocketsInTheFileSystem) {
    const std::optional<Address> address = AddressFrom("unix:/run/mngsrvraid/a.sock");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->path, "/run/mngsrvraid/a.sock");
    EXPECT_FALSE(address->isEncrypted);
    EXPECT_TRUE(AddressFrom("unix:/" + std::string(106, 'x')));
    EXPECT_FALSE(AddressFrom("unix:/" + std::string(107, 'x'))) << "longer than the system takes";
}

TEST(Addresses, AreNothingElse) {
    for (const std::string text : {"",
                                   "127.0.0.1",
                                   "127.0.0.1:",
                                   "127.0.0.1:0",
                                   "127.0.0.1:65536",
                                   "127.0.0.1:x",
                                   "127.0.0.1:80 ",
                                   "localhost:80",
                                   "::1:80",
                                   "[::1]80",
                                   "[::1",
                                   "[127.0.0.1]:80",
                                   "http://0.0.0.0:80",
                                   "http://192.0.2.1:80",
                                   "http://[::]:80",
                                   "ftp://127.0.0.1:80",
                                   "unix:",
                                   "unix:a",
                                   "https://",
                                   "http://unix:/a"}) {
        EXPECT_FALSE(AddressFrom(text)) << text;
    }
    EXPECT_FALSE(AddressFrom(std::string("unix:/a\0b", 9)));
}

}  // namespace
}  // namespace service::test
