#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace service {

// What whoever started the service gets to know, where that is systemd; else nobody does.

void TellReady(const std::string& state);
void TellState(const std::string& state);
void TellReloading();
void TellStopping();
void TellAlive();

/// How often it wants to know that the service is alive, so that half of it is early enough; nothing: never.
[[nodiscard]] std::optional<std::chrono::microseconds> AliveInterval();

}  // namespace service
