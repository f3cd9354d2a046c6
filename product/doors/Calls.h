#pragma once

#include "board/Link.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace doors {

/// Calls that clients want the service to make. Who wants what somebody else is waiting for already waits
/// with him, so that however many ask, the tool runs once. One thread.
class Calls final {
  public:
    using Taker = std::function<void(const board::Outcome&)>;

    explicit Calls(board::Link& link) : m_Link(link) {}

    /// `take` gets the outcome, at once where the call cannot be made.
    void Make(board::Call call, Taker take);

    /// What the service tells of one.
    void Take(const board::Outcome& outcome);

  private:
    struct Waiting {
        std::string call;  ///< its bytes, without a number
        std::vector<Taker> takers;
    };

    board::Link& m_Link;
    std::uint64_t m_Last = 0;
    std::map<std::uint64_t, Waiting> m_Waiting;
};

}  // namespace doors
