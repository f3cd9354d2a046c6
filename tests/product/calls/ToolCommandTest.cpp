#include "calls/ToolCommand.h"

#include <gtest/gtest.h>

namespace calls::test {
namespace {

TEST(ToolCommand, TellsControllerAndReport) {
    EXPECT_EQ(DescribeCommand("vdkcli -v"), "version of the tool (vdkcli -v)");
    EXPECT_EQ(DescribeCommand("vdkcli -ctrlinfo -aAll"),
              "all controllers: controller data (vdkcli -ctrlinfo -aAll)");
    EXPECT_EQ(DescribeCommand("vdkcli -ctrlinfo -a12"),
              "controller 12: controller data (vdkcli -ctrlinfo -a12)");
    EXPECT_EQ(DescribeCommand("vdkcli -ldpdinfo -a0"), "controller 0: logical drives (vdkcli -ldpdinfo -a0)");
    EXPECT_EQ(DescribeCommand("vdkcli -pdinfo -nosmart -a0"),
              "controller 0: physical drives (vdkcli -pdinfo -nosmart -a0)");
    EXPECT_EQ(DescribeCommand("vdkcli -pdinfo -pd[252:3] -a0"),
              "controller 0: drive 252:3 (vdkcli -pdinfo -pd[252:3] -a0)");
    EXPECT_EQ(DescribeCommand(""), "report ()");
}

TEST(ToolCommand, LetsNoOddByteReachTheTerminal) {
    EXPECT_EQ(DescribeCommand("a\x1b[2J\n\xc3\xa4\xff"), std::string("report (a?[2J") + "???" + "?)");
}

}  // namespace
}  // namespace calls::test
