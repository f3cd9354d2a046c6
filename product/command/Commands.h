#pragma once

#include "Options.h"
#include "basics/DocumentTarget.h"
#include "history/History.h"
#include "inventory/Criteria.h"

#include <optional>

namespace command {

/// What is known before the server is asked.
struct Surroundings {
    inventory::Criteria criteria;                   ///< what it is judged by
    std::optional<history::ServerHistory> history;  ///< for its page
};

/// Does what the subcommand says, in the install root and under the trace that `options` name already, and
/// prints it when it is whole. What fails is thrown as basics::Failure, but for `health`: that prints why
/// nothing is known.
[[nodiscard]] int RunCommand(const Options& options, const basics::DocumentTarget& target,
                             const Surroundings& surroundings);

/// For `health`, when not even the command line or the server's surroundings are right: says so in the way of
/// monitoring plug-ins, on standard output, and gives their exit status for "unknown".
[[nodiscard]] int TellUnknownHealth(const std::string& why) noexcept;

}  // namespace command
