#include "board/Wire.h"

#include <gtest/gtest.h>

namespace board {
namespace {

std::string Packed() {
    Packer packer;
    packer.Number(0x0102030405060708U);
    packer.Text("");
    packer.Text(std::string("a\0b", 3));
    packer.Number(1);
    return packer.Take();
}

TEST(Wire, GivesBackWhatWasPutIn) {
    const std::string bytes = Packed();
    EXPECT_EQ(bytes.substr(0, 8), "\x08\x07\x06\x05\x04\x03\x02\x01");
    Unpacker unpacker(bytes);
    EXPECT_EQ(unpacker.Number(), 0x0102030405060708U);
    EXPECT_EQ(unpacker.Text(), "");
    EXPECT_EQ(unpacker.Text(), std::string("a\0b", 3));
    EXPECT_TRUE(unpacker.Flag());
    unpacker.End();
}

TEST(Wire, RefusesWhatIsCutShort) {
    const std::string bytes = Packed();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const auto takeAll = [&] {
            Unpacker unpacker(std::string_view(bytes).substr(0, size));
            (void)unpacker.Number();
            (void)unpacker.Text();
            (void)unpacker.Text();
            (void)unpacker.Flag();
        };
        EXPECT_THROW(takeAll(), WireError) << size;
    }
}

TEST(Wire, RefusesWhatGoesOn) {
    const std::string bytes = Packed();
    EXPECT_THROW(Unpacker(bytes).End(), WireError);
}

TEST(Wire, BelievesNoSizeThatCannotBe) {
    Packer packer;
    packer.Number(~std::uint64_t(0));
    const std::string bytes = packer.Take() + "rest";
    EXPECT_THROW((void)Unpacker(bytes).Text(), WireError);
    EXPECT_THROW((void)Unpacker(bytes).Count(), WireError);
    EXPECT_THROW((void)Unpacker(bytes).Flag(), WireError);
}

}  // namespace
}  // namespace board
