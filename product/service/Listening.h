#pragma once

#include "Configuration.h"
#include "basics/Descriptor.h"

namespace service {

/// A socket on which clients may come, of the network or in the file system; one that a service has left
/// there is taken away before. Closed when a program is started. Throws basics::Failure(Surroundings) with
/// the address.
[[nodiscard]] basics::Descriptor ListenOn(const Address& address);

}  // namespace service
