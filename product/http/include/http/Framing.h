#pragma once

#include "http/Message.h"

#include <cstddef>
#include <string>

namespace http {

// How a request lies on its connection. Where two servers, one behind the other, could disagree about where
// it ends, a second request can be hidden in the first.

/// Whether two servers could see two different requests in it, or somebody pretends to be two hosts:
///
///     Content-Length: 4
///     Content-Length : 44
[[nodiscard]] bool IsAmbiguous(const Request& request);

/// Bytes of the body as the request tells them; 0 where it does not. Of a request that is not ambiguous.
[[nodiscard]] std::size_t LengthOf(const Request& request);

/// Whether a text can be the value of a header, and does not become another one.
[[nodiscard]] bool IsHeaderText(const std::string& text);

}  // namespace http
