#pragma once

#include "telling/Channel.h"
#include "watch/Event.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace telling {

/// What a channel said to a test event.
struct TestAnswer {
    std::string channel;
    bool isDelivered = false;
    std::string words = {};  ///< "HTTP 204"; why it failed; empty where it said nothing
    std::chrono::milliseconds taken{0};
};

/// An event that says of itself that it is a test.
[[nodiscard]] watch::Event MakeTestEvent(const std::string& host, watch::TimePoint now);

/// Sends an event to all channels at once, whatever their least levels are, and waits for each of them, which
/// takes as long as the slowest may. `hear` is called for each as it answers, and may be null. The answers
/// are in the channels' order; nothing is tried twice.
///
/// One thread; leaves no process behind.
[[nodiscard]] std::vector<TestAnswer> TestAlert(const std::vector<Channel>& channels,
                                                const watch::Event& event, const std::string& host,
                                                const std::function<void(const TestAnswer&)>& hear = nullptr);

}  // namespace telling
