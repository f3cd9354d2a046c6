#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace supervision {

/// What the supervisor has to know of the work that it watches.
struct Supervision {
    bool drawsProgress = false;  ///< the terminal's last line may be an unfinished one
    std::string program = {};    ///< its name, before what is said
    std::string remains = {};  ///< what an end before its time leaves: "; the capture in DIR is incomplete"
    std::chrono::seconds timeLimit{0};  ///< for the work; 0: it may take as long as it likes
    int overtimeStatus = 1;             ///< the exit status when it was over
    /// Tells of an end before its time in its own way, in place of a line on standard error. The parent ends
    /// with its result as the exit status then. May be null.
    int (*tellEnd)(const std::string& words) noexcept = nullptr;
    const char* privateFolder = nullptr;  ///< first part of a name: the work needs a folder for its own files
    std::vector<std::string> otherPlaces = {};  ///< for that folder, where none can be made below TMPDIR
};

/// Splits the process in two: a worker, in which this returns, and its parent, which only watches and never
/// returns. The parent ends as the worker does, with the same status or by the same signal.
///
/// SIGINT, SIGTERM, SIGHUP or SIGQUIT to the parent is passed on to the worker. When that, or another signal,
/// has ended the worker, the parent ends all processes that the worker leaves behind (it is their subreaper),
/// says so in one line, and dies by the signal. A worker that puts such a signal off, because it is replacing
/// a file, is given some seconds. What the tool leaves running
/// when the worker ends by itself is not touched.
///
/// Work that takes longer than its time is ended in the same way (SIGTERM, and some seconds later SIGKILL),
/// with all that it started. The line names the command that it was running: "vdkcli -pdinfo -a0 did not end
/// within 50 s".
///
/// Signals that are ignored or blocked when this is called stay so, in both. The worker's signals are as if
/// there were no parent; it is killed when the parent dies.
///
/// Returns the path of the private folder (mode 0700, below TMPDIR or the first of the other places that can
/// be written), which is empty and which the parent removes when the worker has ended in whatever way; ""
/// where none was asked for.
///
/// To be called while the process has one thread. Throws basics::Failure(Surroundings) when the folder or the
/// process cannot be made.
std::string Supervise(const Supervision& supervision);

}  // namespace supervision
