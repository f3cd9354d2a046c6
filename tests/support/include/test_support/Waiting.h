#pragma once

#include <chrono>
#include <thread>

namespace testsupport {

/// Waits until something has happened, however slow the machine is. False when it has not after minutes: then
/// it never will.
template <typename Condition>
[[nodiscard]] bool ComesTrue(Condition condition) {
    constexpr std::chrono::minutes kPatience{2};
    constexpr std::chrono::milliseconds kBetweenLooks{2};
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return true;
}

}  // namespace testsupport
