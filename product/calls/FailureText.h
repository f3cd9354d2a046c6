#pragma once

#include "ToolRun.h"
#include "calls/MethodCall.h"

#include <optional>
#include <string>

namespace calls {

/// What surrounds a failure, for the advice on it.
struct FailureSetting {
    std::string call;           ///< what is said to fail, "get-info"
    bool isOfOneDrive = false;  ///< whether GetPDInfo was called
    std::string scenario = {};  ///< empty: against this server
    std::optional<std::string> command = {};  ///< that the tool ran last, "vdkcli -pdinfo -a0"
    std::optional<ToolRun> run = {};          ///< its last one, where that is what failed
};

/// One line for a method that ended with a return value other than 0: the value, the reasons in words with
/// their codes, at which report of the tool, how its run ended, what to do. `reasons` are two-digit codes, newest first.
[[nodiscard]] std::string DescribeMethodFailure(DWORD returnValue, const std::optional<std::string>& reasons,
                                                const FailureSetting& setting);

/// One line for a call that failed, or that succeeded without a result.
[[nodiscard]] std::string DescribeCallFailure(const MethodOutcome& outcome, const FailureSetting& setting);

}  // namespace calls
