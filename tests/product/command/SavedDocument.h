#pragma once

#include "test_support/Command.h"

#include <gtest/gtest.h>

#include <string>

namespace command::test {

/// What `get-info` gives for a scenario.
[[nodiscard]] inline std::string XmlOf(const std::string& scenario) {
    return testsupport::RunCommand({"--scenario", scenario, "get-info"}).out;
}

/// A saved document.
class Saved final {
  public:
    explicit Saved(const std::string& xml) { testsupport::WriteFile(Path(), xml); }
    [[nodiscard]] std::string Path() const { return m_Folder / "saved.xml"; }

  private:
    testsupport::TempFolder m_Folder;
};

/// The text with the first `old` in it replaced, which must be there.
[[nodiscard]] inline std::string Replaced(std::string text, const std::string& old, const std::string& now) {
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return at == std::string::npos ? text : text.replace(at, old.size(), now);
}

}  // namespace command::test
