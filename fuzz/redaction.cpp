// A capture that is redacted: a word of one's own, the host, README.md, two texts of the tool and
// instructions.

#include "RedactedTexts.h"
#include "support/Input.h"
#include "support/Property.h"

#include <algorithm>
#include <string>

namespace {

using capture::Texts;
using fuzzing::Require;

constexpr const char* kFiles[] = {"README.md", "ctrlinfo_aAll.txt", "pdinfo_a0.txt", "any.do"};

std::size_t LinesOf(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

/// What `RedactTexts` says that it has put in some values' places can be seen there.
void CheckList(const capture::Replacements& replaced, const Texts& texts) {
    for (const auto& [word, places] : replaced) {
        const std::string name = WordFor(word);
        Require(places > 0, "what is listed is somewhere");
        Require(
            std::count_if(texts.begin(), texts.end(),
                          [&](const auto& text) { return text.second.find(name) != std::string::npos; }) > 0,
            "a word of the list is in README.md");
    }
}

void CheckRedaction(std::string_view input) {
    constexpr std::size_t kFirstFile = 2;
    const fuzzing::Sections sections = fuzzing::Split(input, fuzzing::kSectionEnd);
    capture::RedactionOrder order;
    if (!sections[0].empty()) {
        order.words.emplace_back(sections[0]);
    }
    order.host = sections.size() > 1 ? sections[1] : std::string_view();
    Texts texts;
    for (std::size_t number = kFirstFile; number < sections.size(); ++number) {
        texts[kFiles[number % std::size(kFiles)]] = sections[number];
    }
    const Texts before = texts;
    const capture::Replacements replaced = RedactTexts(texts, order);
    for (const auto& [name, text] : before) {
        Require(name == capture::kReadme || LinesOf(text) == LinesOf(texts[name]), "lines stay lines");
        Require(!replaced.empty() || name == capture::kReadme || text == texts[name],
                "what is replaced is listed");
    }
    CheckList(replaced, texts);
    const Texts once = texts;
    Require(RedactTexts(texts, order).empty(), "nothing is left for a second time");
    Require(texts == once, "a second time changes nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckRedaction(fuzzing::TextOf(data, size));
    return 0;
}
