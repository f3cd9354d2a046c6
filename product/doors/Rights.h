#pragma once

#include <cstdint>

namespace doors {

/// Becomes the user and group, where it may, and has no capabilities from then on, whoever it is. To be
/// called while the process has one thread: each has its own. Throws basics::Failure(Surroundings).
void BecomeNobody(std::uint32_t user, std::uint32_t group);

/// Leaves this process what it takes to answer on the sockets and descriptors that it has, and nothing else,
/// for ever: no new rights by programs; no files, no sockets of its own, no programs, no other processes, no
/// core dumps. All threads. To be called when everything is open. Throws basics::Failure(Surroundings).
void GiveUpRights();

}  // namespace doors
