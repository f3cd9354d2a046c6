#pragma once

#include "test_support/Command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace docs::test {

/// A document, by its path in the checkout: "docs/host.md".
[[nodiscard]] inline std::string DocumentText(const std::string& path) {
    return testsupport::ReadFile(std::filesystem::path(COMMAND_TEST_SOURCES) / path);
}

/// Its fenced blocks of one language.
[[nodiscard]] inline std::vector<std::string> Blocks(const std::string& text, const std::string& language) {
    const std::string opening = "\n```" + language + "\n";
    std::vector<std::string> blocks;
    for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at)) {
        at += opening.size();
        blocks.push_back(text.substr(at, text.find("\n```\n", at) + 1 - at));
    }
    return blocks;
}

/// With the first `from` replaced, which must be there.
[[nodiscard]] inline std::string Replaced(const std::string& text, const std::string& from,
                                          const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from << " is not in " << text;
    return at == std::string::npos ? text : std::string(text).replace(at, from.size(), to);
}

}  // namespace docs::test
