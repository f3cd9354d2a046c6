// What a server ought to have, and a document of what it has: two sections.

#include "inventory/Expectations.h"

#include "inventory/Snapshot.h"
#include "support/Input.h"
#include "support/Property.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

using fuzzing::Require;

std::optional<inventory::Expectations> Read(std::string_view text) {
    try {
        return inventory::ReadExpectations(text);
    } catch (const inventory::ExpectationsError& error) {
        Require(error.what() != std::string_view(), "what is wrong is said");
        return std::nullopt;
    }
}

void CheckText(const inventory::Expectations& expectations) {
    const std::string text = Text(expectations);
    const std::optional<inventory::Expectations> again = Read(text);
    Require(again.has_value(), "what is saved can be read");
    Require(Text(*again) == text, "what is saved is what is read");
}

void CheckJudgement(inventory::Document document, const inventory::Expectations& expectations) {
    const inventory::Criteria criteria = {expectations, {40, 10, 1, 1}, "2031-04-05"};
    const inventory::Snapshot snapshot(std::move(document), "", {}, criteria);
    const inventory::Health& health = snapshot.TheHealth();
    Require(std::is_sorted(health.findings.begin(), health.findings.end(),
                           [](const auto& one, const auto& other) {
                               return std::pair(one.isAccepted, other.level) <
                                      std::pair(other.isAccepted, one.level);
                           }),
            "what counts comes first, the worst before the others");
    for (const inventory::Finding& finding : health.findings) {
        Require(finding.isAccepted || finding.level <= health.level, "what counts raises the level");
        Require(!finding.isAccepted || finding.until >= criteria.today, "an acceptance ends with its day");
    }
    inventory::Expectations own;
    own.controllers = ExpectedOf(snapshot.TheServer());
    CheckText(own);
}

void CheckExpectations(std::string_view input) {
    const fuzzing::Sections sections = fuzzing::Split(input, fuzzing::kSectionEnd);
    const std::optional<inventory::Expectations> expectations = Read(sections.front());
    if (expectations) {
        CheckText(*expectations);
    }
    try {
        CheckJudgement(inventory::Document::Read(sections.back()),
                       expectations.value_or(inventory::Expectations()));
    } catch (const inventory::DocumentError&) {
        return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckExpectations(fuzzing::TextOf(data, size));
    return 0;
}
