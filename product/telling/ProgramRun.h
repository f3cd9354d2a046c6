#pragma once

#include "Errand.h"

#include <string>
#include <vector>

namespace telling {

/// A program, what it gets, and nothing of a shell.
struct ProgramRun {
    std::string path;
    std::vector<std::string> arguments = {};
    std::string input = {};                     ///< on its standard input
    std::vector<std::string> environment = {};  ///< "NAME=value", beside that of the service

    /// The work of an errand: runs it and keeps the end of what it prints. True when it ended with status 0;
    /// what is said is its last line then, else "/usr/local/bin/notify ended with status 3: no such pager".
    ///
    /// The errand stays the parent of whatever the program starts, so that it can be ended with it. A program
    /// that is asked to end is waited for, together with those.
    [[nodiscard]] bool Run(const Errand::Say& say) const;
};

}  // namespace telling
