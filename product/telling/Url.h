#pragma once

#include <string>
#include <string_view>

namespace telling {

/// What has to be known of a URL before anything is sent there.
struct Url {
    bool isSecure = false;
    std::string host = {};  ///< "alerts.example.org", "127.0.0.1", "::1"

    /// Throws basics::Failure(Use), in words, for what is no URL of a web server, or one with a name and a
    /// password.
    [[nodiscard]] static Url From(std::string_view text);

    /// Whether what is sent stays on this machine.
    [[nodiscard]] bool IsLoopback() const;
};

}  // namespace telling
