#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What the system says of other processes at this moment.
namespace testsupport {

struct Process {
    pid_t id = -1;
    pid_t parent = -1;
    char state = '\0';       ///< 'R', 'S', 'T', 'Z'
    std::string name;        ///< of the program: "vdkcli"
    std::string words = {};  ///< its command line, each word with a blank behind it
};

/// All that are there; one that ends meanwhile may be missing.
[[nodiscard]] std::vector<Process> Processes();

/// The children of a process, theirs, and so on.
[[nodiscard]] std::vector<Process> DescendantsOf(pid_t ancestor);

/// Whether there is such a one among them.
[[nodiscard]] bool HasDescendant(pid_t ancestor, const std::function<bool(const Process&)>& isWanted);

/// One process; its state is '\0' when it is gone.
[[nodiscard]] Process Look(pid_t id);

}  // namespace testsupport
