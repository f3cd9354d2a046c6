#pragma once

namespace telling {

/// Capabilities that a process hands on to programs without being root.
void DropAmbientRights() noexcept;

/// For a process that speaks to the network: it becomes nobody where it may, has no capabilities, and can get
/// none back.
void GiveUpRights() noexcept;

}  // namespace telling
