#pragma once

#include "test_support/CountedSleep.h"
#include "test_support/FakeLibrary.h"
#include "test_support/ToolBench.h"
#include "test_support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace testsupport {

/// A test of the module's own parts: with an install root, a tool, a conversion library and a trace of its
/// own.
class ModuleTest : public ::testing::Test {
  protected:
    ModuleTest() { ResetPauses(); }

    void TearDown() override {
        m_Library.Delete(m_Items);
        EXPECT_THAT(m_Root.ResultFiles(), ::testing::ElementsAreArray(m_ExpectedLeftFiles));
    }

    /// Lines of the items collected so far, "parent|name|value|flag".
    [[nodiscard]] std::vector<std::string> Items() const { return FakeLibrary::Describe(m_Items); }

    /// Failures in the trace.
    [[nodiscard]] std::vector<std::string> Failures() const { return m_Trace.Texts(2); }

    FakeLibrary m_Library;
    InstallRoot m_Root;
    ToolBench m_Tool;
    TraceRecorder m_Trace;
    ItemList m_Items;
    std::vector<std::string> m_ExpectedLeftFiles;  ///< result files that are meant to stay
};

}  // namespace testsupport
