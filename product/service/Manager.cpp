#include "Manager.h"

#include "basics/Text.h"

#include <systemd/sd-daemon.h>
#include <time.h>

#include <cstdint>

namespace service {
namespace {

void Notify(const std::string& message) {
    (void)sd_notify(0, message.c_str());  // Who does not listen is not told.
}

std::string StatusLine(const std::string& state) {
    return "STATUS=" + basics::OneLine(state);
}

}  // namespace

void TellReady(const std::string& state) {
    Notify("READY=1\n" + StatusLine(state));
}

void TellState(const std::string& state) {
    Notify(StatusLine(state));
}

void TellReloading() {
    struct timespec now {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    constexpr long kNanosecondsOfAMicrosecond = 1000;
    constexpr std::int64_t kMicrosecondsOfASecond = 1'000'000;
    Notify("RELOADING=1\nMONOTONIC_USEC=" +
           std::to_string(now.tv_sec * kMicrosecondsOfASecond + now.tv_nsec / kNanosecondsOfAMicrosecond));
}

void TellStopping() {
    Notify("STOPPING=1");
}

void TellAlive() {
    Notify("WATCHDOG=1");
}

std::optional<std::chrono::microseconds> AliveInterval() {
    std::uint64_t microseconds = 0;
    return sd_watchdog_enabled(0, &microseconds) > 0 ? std::optional(std::chrono::microseconds(microseconds))
                                                     : std::nullopt;
}

}  // namespace service
