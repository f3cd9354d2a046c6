#pragma once

#include <cstdint>

namespace doors {

/// Leaves this process what it takes to answer on the sockets and descriptors that it has, and nothing else,
/// for ever: the user and group, where it may become them; no capabilities; no new rights by programs; no
/// files, no sockets of its own, no programs, no other processes, no core dumps. All threads. To be called
/// when everything is open. Throws basics::Failure(Surroundings).
void GiveUpRights(std::uint32_t user, std::uint32_t group);

}  // namespace doors
