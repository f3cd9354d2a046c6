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

Replacements RedactOnce(Texts& texts, const RedactionOrder& order, const Replacements& earlier) {
    Redaction redaction;
    for (const Redaction::Replacement& each : earlier) {
        redaction.Keep(each.word);
    }
    for (const std::string& word : order.words) {
        redaction.AddWord(word);
    }
    redaction.AddHost(order.host);
    for (const auto& [name, text] : texts) {
        if (IsInstructions(name)) {
            redaction.CollectInstructions(text);
        } else {
            redaction.Collect(text);
        }
    }
    for (auto& [name, text] : texts) {
        text = IsInstructions(name) ? redaction.RedactInstructions(text) : redaction.Redact(text);
    }
    return redaction.Replaced();
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
    if (texts[kReadme].empty()) {
        texts[kReadme] = "# A RAID server\n";
    }
    ListedReadme readme = TakeList(texts[kReadme]);
    texts[kReadme] = WithoutNames(readme.text, order.paths);
    // What is replaced may bring to light what stood behind it; so until there is no more.
    constexpr int kMostRounds = 8;
    Replacements replaced;
    for (int round = 0; round < kMostRounds; ++round) {
        const Replacements more = RedactOnce(texts, order, readme.list);
        if (more.empty()) {
            break;
        }
        readme.list = Merged(std::move(readme.list), more);
        replaced = Merged(std::move(replaced), more);
    }
    texts[kReadme] = PutList({texts[kReadme], readme.list});
    return replaced;
}

}  // namespace capture
