#pragma once

#include "Options.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace command {

/// A command line as it was typed: its words have found their options and arguments, and what they say is yet
/// to be looked at.
struct Typed {
    Options options;  ///< with what can be taken as it is
    std::optional<std::string> trace, format, timeout, jobs, host, save, since;
    std::vector<std::string> part;
    /// In the order of inventory::Limits.
    std::array<std::pair<const char*, std::optional<std::string>>, 4> limits = {
        {{"--max-temperature", {}},
         {"--max-media-errors", {}},
         {"--max-media-error-growth", {}},
         {"--min-spares", {}}}};
    std::array<std::optional<std::string>, 3> drive;
    bool asksForHelp = false;  ///< nothing else counts then
    bool asksForVersion = false;
    std::optional<Options::Action> action;  ///< of the subcommand; nothing where there is none
    std::string subcommands;                ///< all of them: "show, smart or health"
};

/// Knows all options and subcommands, and the help. Throws basics::Failure(Use) for a word that is none of
/// them, or that stands where it must not.
[[nodiscard]] Typed ReadCommandLine(int count, const char* const* words);

[[noreturn]] void Reject(const std::string& what);
[[nodiscard]] std::string Quoted(const std::string& text);

}  // namespace command
