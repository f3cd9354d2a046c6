#pragma once

#include <string>
#include <string_view>

namespace calls {

/// What a command of the tool fetches: "controller 0: physical drives (vdkcli -pdinfo -a0)". Printable ASCII
/// whatever the command holds.
[[nodiscard]] std::string DescribeCommand(std::string_view command);

}  // namespace calls
