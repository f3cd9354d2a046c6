#pragma once

#include "Reply.h"

namespace wbem {

/// An operation of the protocol: the XML that it returns. What is not served is refused, as is everything
/// that would change something. Throws CimError.
[[nodiscard]] std::string Perform(const Call& call, const Classes& classes, const board::Board& board);

/// The call of a class's method, with its arguments held against the declaration. Throws CimError.
[[nodiscard]] MethodCall ReadMethodCall(const Call& call, const Classes& classes);

/// What a status of WBEM is for a client: 0x8004100C is NotSupported.
[[nodiscard]] CimError::Code CodeOf(std::uint32_t status);

}  // namespace wbem
