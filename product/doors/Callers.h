#pragma once

#include "http/Message.h"

#include <optional>
#include <string>

namespace doors {

// Who a request comes from, as far as it says so itself.

struct Credentials {
    std::string name, password;
};

/// Of "Basic bW9uaXRvcmluZzpzZWNyZXQ="; nothing for anything else.
[[nodiscard]] std::optional<Credentials> CredentialsOf(const std::string& header);

/// Whether a page of another server may have made a browser ask.
[[nodiscard]] bool IsFromElsewhere(const http::Request& request);

/// Whether it is asked by a name that nobody else can lead here: a browser that fetches
/// http://elsewhere.example/, and is told that this is at 127.0.0.1, lets that page read what it gets.
[[nodiscard]] bool IsForThisMachine(const http::Request& request);

}  // namespace doors
