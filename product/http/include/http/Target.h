#pragma once

#include "http/Message.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace http {

/// What a request asks for, as its first line has it, taken apart and percent-decoded:
///
///     /redfish/v1/Systems/1?$select=Name%2CStatus&only
///
/// A "+" stays a plus.
struct Target {
    std::string path;
    std::vector<Field> query;
};

/// Nothing for a target that does not begin with "/" (the form for proxies and that of CONNECT are not for
/// this server), holds a percent sign without two hexadecimal digits, or any control character, encoded or
/// not, or is no UTF-8 once it is decoded. ".", ".." and "//" are nothing special: there is no path here that
/// is one of files.
[[nodiscard]] std::optional<Target> TargetFrom(std::string_view text);

}  // namespace http
