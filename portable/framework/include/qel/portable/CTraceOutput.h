#pragma once

#include "qel/QelExport.h"

#include <string>
#include <string_view>

/// One trace line as it was written, before it was made fit for a file.
struct TraceLine {
    std::string_view category;
    int level;              ///< 1, 2, 4 or 8; 0: a message of WriteTrace
    std::string_view text;  ///< of a message: its id, a blank, its argument
};

/// Hears the trace lines of the process at the levels that it was registered for, whatever levels are on for
/// the output. Called on the tracing thread, from several threads at once, and never in a forked child. Must
/// not trace.
class ITraceListener {
  public:
    ITraceListener(const ITraceListener&) = delete;
    ITraceListener& operator=(const ITraceListener&) = delete;
    virtual ~ITraceListener() = default;
    virtual void OnTrace(const TraceLine& line) noexcept = 0;

  protected:
    ITraceListener() = default;
};

/// Where the trace goes. To be set while no other thread traces.
///
/// A line has five fields separated by tabs: time (UTC), thread, category, level, text.
///
///     2026-03-01T09:30:00.123456Z	4711	msraid	4	CMSRAID_InfoGetter::Parse [START]
///
/// It stays one line with four tabs whatever the text holds: a backslash is written `\\`, line feed `\n`,
/// carriage return `\r`, tab `\t`, any other control character `\x1b`. Bytes from 0x80 on are written as they
/// are.
class QEL_API CTraceOutput {
  public:
    CTraceOutput() = delete;

    static constexpr unsigned ALL_LEVELS = 1 | 2 | 4 | 8;

    /// The levels that are written, as a sum of bits. 0, the state at start, writes nothing; with any other
    /// value messages of WriteTrace are written too.
    static void SetLevels(unsigned levels) noexcept;

    /// A forked child goes on with what was standard error when it was forked, whatever it makes of that.
    static void UseStandardError() noexcept;

    /// Writes to that file from now on, emptying it first. On failure returns false with `errno` set and
    /// changes nothing.
    [[nodiscard]] static bool OpenFile(const std::string& path) noexcept;

    /// Null: no listener. Not owned; must outlive its registration. It hears the levels of this sum of bits,
    /// and with any of them the messages; a line that nobody wants is not even formatted, and there are two
    /// of level 4 for most lines of a report.
    static void SetListener(ITraceListener* listener, unsigned levels = ALL_LEVELS) noexcept;
};
