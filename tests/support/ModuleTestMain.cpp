#include "test_support/ToolBench.h"

#include <gtest/gtest.h>

#include <cstring>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!::testing::GTEST_FLAG(list_tests)) {
        testsupport::EnterToolBench();
    }
    return RUN_ALL_TESTS();
}
