#include "vdksim/Command.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>

namespace vdksim {

namespace {

std::vector<std::string> Words(const std::string& line) {
    std::istringstream in(line);
    return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// The stem of an accepted command, or the rejected token in front of a question mark.
std::string Read(const std::string& line, bool takesNoSmart = true) {
    const auto parsed = ParseCommand(Words(line), takesNoSmart);
    if (const auto* rejected = std::get_if<Rejected>(&parsed)) {
        return rejected->token + "?";
    }
    return std::get<Command>(parsed).FileStem();
}

TEST(CommandTest, EveryShapeOfTheToolHasItsFileName) {
    EXPECT_EQ(Read("-v"), "v");
    EXPECT_EQ(Read("-ctrlinfo -aAll"), "ctrlinfo_aAll");
    EXPECT_EQ(Read("-ctrlinfo -a0"), "ctrlinfo_a0");
    EXPECT_EQ(Read("-ldpdinfo -a12"), "ldpdinfo_a12");
    EXPECT_EQ(Read("-pdinfo -a0"), "pdinfo_a0");
    EXPECT_EQ(Read("-pdinfo -nosmart -a0"), "pdinfo_nosmart_a0");
    EXPECT_EQ(Read("-pdinfo -pd[252:3] -a0"), "pdinfo_pd252.3_a0");
}

TEST(CommandTest, EverythingElseIsRejectedAtItsFirstBadToken) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "?"},
        {"-x", "-x?"},
        {"v", "v?"},
        {"-V", "-V?"},
        {"-v -a0", "-a0?"},
        {"-ctrlinfo", "-ctrlinfo?"},
        {"-ctrlinfo -a", "-a?"},
        {"-ctrlinfo -aall", "-aall?"},
        {"-ctrlinfo -a-1", "-a-1?"},
        {"-ctrlinfo -a+1", "-a+1?"},
        {"-ctrlinfo -a1x", "-a1x?"},
        {"-ctrlinfo -a99999999999", "-a99999999999?"},
        {"-ctrlinfo -a0 -a1", "-a1?"},
        {"-ctrlinfo -nosmart -a0", "-nosmart?"},
        {"-ldpdinfo -aAll", "-aAll?"},
        {"-pdinfo -aAll", "-aAll?"},
        {"-pdinfo -a0 -nosmart", "-nosmart?"},
        {"-pdinfo -nosmart -pd[1:2] -a0", "-pd[1:2]?"},
        {"-pdinfo -pd[1:2]", "-pd[1:2]?"},
        {"-pdinfo -pd[1:2 -a0", "-pd[1:2?"},
        {"-pdinfo -pd[12] -a0", "-pd[12]?"},
        {"-pdinfo -pd[-1:2] -a0", "-pd[-1:2]?"},
        {"-pdinfo -pd[:] -a0", "-pd[:]?"},
    };
    for (const auto& [line, token] : cases) {
        EXPECT_EQ(Read(line), token) << line;
    }
}

TEST(CommandTest, AnOldToolDoesNotKnowNoSmart) {
    EXPECT_EQ(Read("-pdinfo -nosmart -a0", false), "-nosmart?");
    EXPECT_EQ(Read("-pdinfo -pd[1:2] -a0", false), "pdinfo_pd1.2_a0");
}

TEST(CommandTest, NoSmartNeedsTwoDottedPartsFromFourOn) {
    for (const char* version : {"4.0", "4.1", "12.3", "4x.1", "4.", "99999999999.1"}) {
        EXPECT_TRUE(VersionTakesNoSmart(version)) << version;
    }
    for (const char* version : {"", "4", "3.9", "4.0.1", "x.1", ".5", "3.5"}) {
        EXPECT_FALSE(VersionTakesNoSmart(version)) << version;
    }
}

}  // namespace

}  // namespace vdksim
