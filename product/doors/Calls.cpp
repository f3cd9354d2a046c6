#include "Calls.h"

#include <algorithm>
#include <utility>

namespace doors {
namespace {

constexpr std::size_t kMostTakers = 1000;
constexpr std::size_t kMostCalls = 32;

}  // namespace

void Calls::Make(board::Call call, Taker take) {
    call.id = 0;
    const std::string bytes = Pack(call);
    const auto same = std::find_if(m_Waiting.begin(), m_Waiting.end(),
                                   [&](const auto& each) { return each.second.call == bytes; });
    if (same != m_Waiting.end() && same->second.takers.size() < kMostTakers) {
        same->second.takers.push_back(std::move(take));
        return;
    }
    call.id = ++m_Last;
    if (same != m_Waiting.end() || m_Waiting.size() >= kMostCalls ||
        !m_Link.Send(board::MessageKind::Call, Pack(call))) {
        take({call.id, "too many calls are waiting already"});
        return;
    }
    m_Waiting[call.id] = {bytes, {std::move(take)}};
}

void Calls::Take(const board::Outcome& outcome) {
    const auto found = m_Waiting.find(outcome.id);
    if (found == m_Waiting.end()) {
        return;
    }
    const Waiting waiting = std::move(found->second);
    m_Waiting.erase(found);
    for (const Taker& take : waiting.takers) {
        take(outcome);
    }
}

}  // namespace doors
