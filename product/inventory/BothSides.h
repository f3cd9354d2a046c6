#pragma once

#include "inventory/Server.h"

#include <cstddef>
#include <vector>

namespace inventory {

/// Calls `take(old, now)` once for everything in two lists, with kNowhere for the side that lacks it.
/// `partners` has, for each of the earlier list, which of the later one is the same. The order is that of the
/// earlier list; what is new comes right before what it stands before in the later list, as far as that is
/// the same.
template <typename Take>
void ForEachOnEitherSide(const std::vector<std::size_t>& partners, std::size_t countAfter, Take take) {
    enum class State : unsigned char { New, Awaited, Taken };
    std::vector<State> states(countAfter, State::New);
    for (const std::size_t now : partners) {
        if (now != kNowhere) {
            states[now] = State::Awaited;
        }
    }
    std::size_t next = 0;
    const auto takeNew = [&] {
        for (; next < countAfter && states[next] != State::Awaited; ++next) {
            if (states[next] == State::New) {
                take(kNowhere, next);
            }
        }
    };
    for (std::size_t old = 0; old < partners.size(); ++old) {
        if (partners[old] != kNowhere) {
            takeNew();
            states[partners[old]] = State::Taken;
        }
        take(old, partners[old]);
    }
    takeNew();
}

}  // namespace inventory
