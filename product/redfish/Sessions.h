#pragma once

#include "Types.h"
#include "http/Message.h"
#include "redfish/Accounts.h"

#include <optional>
#include <string>
#include <string_view>

namespace redfish {

// The one part of the tree that clients change. Not kept: sessions come and go between two boards.

/// The collection, or a session, as the account may see it; nothing where there is none of that path. `path`
/// is without "/" at its end.
[[nodiscard]] std::optional<Value> SessionResource(const Accounts& accounts, const std::string& account,
                                                   const std::string& path);

/// Whether the path is that of the collection, or would be that of a session.
[[nodiscard]] bool IsSessions(std::string_view path);
[[nodiscard]] bool IsSession(std::string_view path);

/// The answer to who wants a session.
[[nodiscard]] http::Response OpenSession(const http::Request& request, Accounts& accounts);

/// The answer to who wants to end one.
[[nodiscard]] http::Response EndSession(const http::Request& request, const std::string& path,
                                        Accounts& accounts);

}  // namespace redfish
