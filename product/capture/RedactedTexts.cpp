#include "RedactedTexts.h"

#include "basics/Words.h"

#include <algorithm>

namespace capture {
namespace {

bool IsNumber(std::string_view text) {
    if (text.starts_with('-')) {
        text.remove_prefix(1);
    }
    return !text.empty() && std::all_of(text.begin(), text.end(), basics::IsDigit);
}

/// "aAll", "a0", "nosmart", "pd252.3"
bool IsArgument(std::string_view word) {
    if (word.starts_with("pd")) {
        const std::size_t dot = word.find('.');
        return dot != word.npos && IsNumber(word.substr(2, dot - 2)) && IsNumber(word.substr(dot + 1));
    }
    return word == "nosmart" || word == "aAll" || (word.starts_with('a') && IsNumber(word.substr(1)));
}

/// Whether what the file says is done, not shown.
bool IsInstructions(std::string_view name) {
    return name.ends_with(".do") || name == "server.conf";
}

}  // namespace

bool IsScenarioFileName(std::string_view name) {
    if (name == "server.conf" || name == "any.do") {
        return true;
    }
    const std::size_t dot = name.rfind('.');
    if (dot == name.npos || (name.substr(dot) != ".txt" && name.substr(dot) != ".do")) {
        return false;
    }
    const std::vector<std::string_view> words = basics::Words(name.substr(0, dot), "_");
    return !words.empty() &&
           (words[0] == "v" || words[0] == "ctrlinfo" || words[0] == "ldpdinfo" || words[0] == "pdinfo") &&
           std::all_of(words.begin() + 1, words.end(), IsArgument);
}

Replacements RedactTexts(Texts& texts, const RedactionOrder& order) {
    Redaction redaction;
    if (texts[kReadme].empty()) {
        texts[kReadme] = "# A RAID server\n";
    }
    ListedReadme readme = TakeList(texts[kReadme]);
    for (const Redaction::Replacement& each : readme.list) {
        redaction.Keep(each.word);
    }
    for (const std::string& word : order.words) {
        redaction.AddWord(word);
    }
    redaction.AddHost(order.host);
    texts[kReadme] = WithoutNames(readme.text, order.paths);
    for (const auto& [name, text] : texts) {
        redaction.Collect(text);
    }
    for (auto& [name, text] : texts) {
        text = IsInstructions(name) ? redaction.RedactInstructions(text) : redaction.Redact(text);
    }
    Replacements replaced = redaction.Replacements();
    texts[kReadme] = PutList({texts[kReadme], Merged(std::move(readme.list), replaced)});
    return replaced;
}

}  // namespace capture
