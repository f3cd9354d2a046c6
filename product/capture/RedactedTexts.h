#pragma once

#include "Readme.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace capture {

/// A scenario's files by their names: "ctrlinfo_aAll.txt", "ctrlinfo_aAll.do", "README.md".
using Texts = std::map<std::string, std::string>;

/// What is to be replaced besides what the texts give away.
struct RedactionOrder {
    std::vector<std::string> words = {};
    std::string host = {};                ///< "" where it is not known
    std::vector<std::string> paths = {};  ///< that README.md may name
};

/// Redacts all of them, and lists in README.md what was replaced by what, how often. Texts that have been
/// redacted come out as they were. Returns what was replaced this time.
[[nodiscard]] Replacements RedactTexts(Texts& texts, const RedactionOrder& order);

/// Whether a file of that name is one that the module's commands make: "pdinfo_pd252.3_a0.txt", "any.do",
/// "server.conf". Such names hold numbers of controllers, enclosures and slots and nothing else.
[[nodiscard]] bool IsScenarioFileName(std::string_view name);

}  // namespace capture
