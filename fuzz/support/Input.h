#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// How an input's bytes become texts: sections (reports, tool runs, items) end with one control character,
/// the fields or directives inside them with another.
namespace fuzzing {

inline constexpr char kSectionEnd = '\x1e';
inline constexpr char kFieldEnd = '\x1f';

using Sections = std::vector<std::string_view>;

[[nodiscard]] inline std::string_view TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// At least one piece; the views live as long as the text.
[[nodiscard]] Sections Split(std::string_view text, char end);

/// A directive in front of a section: three bytes, `kFieldEnd`, what, how much.
struct Directive {
    char what = '\0';
    unsigned char value = 0;
};

/// Takes a directive off the front of the section. False: there is none.
[[nodiscard]] bool TakeDirective(std::string_view& section, Directive& directive);

/// Whether this input is one of those that are run twice: one in sixteen, and every one that is replayed.
[[nodiscard]] bool IsRunTwice(std::string_view input);
void RunAllTwice();

}  // namespace fuzzing
