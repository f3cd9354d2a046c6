#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace views::test {

/// How a page is looked at.
struct Look {
    int width = 1280;
    int height = 900;
    bool isDark = false;
};

/// What a browser makes of a page, by probe.js: the width, its least contrast, the boxes of its slots, what
/// can be clicked, its tables with the columns that are seen whole.
[[nodiscard]] nlohmann::json Probe(const std::string& page, const Look& look);

/// The median colour of each box, `[x, y, width, height]`, of the page as it is seen: `[red, green, blue]`
/// from 0 to 255.
[[nodiscard]] nlohmann::json ColorsIn(const std::string& page, const Look& look, const nlohmann::json& boxes);

}  // namespace views::test
