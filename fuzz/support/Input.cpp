#include "Input.h"

#include <functional>

namespace fuzzing {
namespace {

constexpr std::size_t kOneIn = 16;
bool g_areAllRunTwice = false;

}  // namespace

Sections Split(std::string_view text, char end) {
    Sections sections;
    for (std::size_t at = text.find(end); at != std::string_view::npos; at = text.find(end)) {
        sections.push_back(text.substr(0, at));
        text.remove_prefix(at + 1);
    }
    sections.push_back(text);
    return sections;
}

bool TakeDirective(std::string_view& section, Directive& directive) {
    constexpr std::size_t kLength = 3;
    if (section.size() < kLength || section.front() != kFieldEnd) {
        return false;
    }
    directive = {section[1], static_cast<unsigned char>(section[2])};
    section.remove_prefix(kLength);
    return true;
}

bool IsRunTwice(std::string_view input) {
    return g_areAllRunTwice || std::hash<std::string_view>()(input) % kOneIn == 0;
}

void RunAllTwice() {
    g_areAllRunTwice = true;
}

}  // namespace fuzzing
