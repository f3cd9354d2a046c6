#pragma once

/// What a fuzz target asserts about its input.
namespace fuzzing {

/// Says which property is broken and aborts, so that whoever runs the target keeps the input.
[[noreturn]] void Break(const char* property);

inline void Require(bool holds, const char* property) {
    if (!holds) {
        Break(property);
    }
}

}  // namespace fuzzing
