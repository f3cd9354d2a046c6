#pragma once

#include <functional>
#include <string_view>

namespace testsupport {

/// Called before every line of the trace until it is set anew, with the line's level (0: a message) and text;
/// may throw, as a framework's trace may. The test program's own `CTraceUtility` stands in front of the
/// framework's, in every process forked from it too, and hands on what the hook lets through.
using TraceHook = std::function<void(int level, std::string_view text)>;
void OnTrace(TraceHook hook);

/// For the end of a test.
void ResetTrace();

}  // namespace testsupport
