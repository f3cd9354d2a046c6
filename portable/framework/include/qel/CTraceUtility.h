#pragma once

#include "qel/QelExport.h"

/// The framework's trace. Off until the host turns levels on.
///
/// A line is written as a whole, by one system call, also when many threads trace or a child process does
/// between `fork` and `exec`. This one never throws and leaves `errno` as it was; it is not declared so,
/// since a provider is built against these headers for other frameworks too, whose trace may throw.
class QEL_API CTraceUtility {
  public:
    CTraceUtility() = delete;

    /// Writes one line: `WriteDebug("msraid", 2, "Failed to delete file(%s).", path)`. `level` is one bit: 1
    /// results, 2 failures, 4 start and end of operations, 8 caught exceptions. A line whose level is off is
    /// not formatted.
    static void WriteDebug(const char* category, int level, const char* format, ...)
        __attribute__((format(printf, 3, 4)));

    /// Writes a message meant for the administrator, by its id in the message catalogue and its one text
    /// argument.
    static void WriteTrace(const char* category, const char* messageId, const char* text);
};
