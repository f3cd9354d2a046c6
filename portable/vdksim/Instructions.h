#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vdksim {

// How one command is to misbehave: the contents of a ".do" file, one instruction a line, as in
//     fail-first 2 1    # busy at first
//     sleep 0.5
// A plain value; a later line of the same name replaces an earlier one. docs/scenarios.md lists them all.
struct Instructions {
    using Seconds = std::chrono::duration<double>;

    std::uint64_t passFirst = 0;
    std::uint64_t failFirst = 0;
    int failStatus = 1;
    std::optional<int> exitStatus;
    std::optional<std::string>
        marker;  // the token behind the invalid-input marker; empty: the command's last word
    int signal = 0;
    bool takesShellAlong = false;
    bool stop = false;
    bool endless = false;
    bool toStandardError = false;
    bool closeOutput = false;
    Seconds delay{0};
    Seconds holdOutput{0};
    Seconds keepWriting{0};
    std::uint64_t repeat = 1;
    std::optional<std::uint64_t> bytes;
    std::optional<std::uint64_t> truncate;

    // Reads a file; throws ScenarioError naming file and line when a line cannot be understood.
    [[nodiscard]] static Instructions FromFile(const std::filesystem::path& path);
};

}  // namespace vdksim
