#pragma once

#include <functional>
#include <string>

namespace testsupport {

/// What `work` returns in a child process of its own, which may change whatever belongs to a process;
/// "threw: ..." when it throws. A child that is lost is a test failure.
[[nodiscard]] std::string InChild(const std::function<std::string()>& work);

}  // namespace testsupport
