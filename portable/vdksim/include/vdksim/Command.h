#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace vdksim {

// Where a drive sits: the two numbers of "-pd[252:3]".
struct DriveAddress {
    std::uint32_t enclosure = 0;
    std::uint32_t slot = 0;

    friend bool operator==(const DriveAddress&, const DriveAddress&) = default;
};

// One question that the tool answers, such as "-pdinfo -pd[252:3] -a0". A plain value.
struct Command {
    enum class Kind { Version, Controllers, LogicalDrives, Drives };

    Kind kind = Kind::Version;
    std::optional<std::uint32_t> controller;  // none: the version query, or "-aAll"
    bool withoutSmart = false;
    std::optional<DriveAddress> drive;

    // What the scenario's files for this command are called, without their ending: "pdinfo_pd252.3_a0".
    [[nodiscard]] std::string FileStem() const;
};

// The word at which the tool gives up reading its command line. When words are missing it is the last one
// that is there, and empty without any.
struct Rejected {
    std::string token;
};

// Reads the arguments behind the program's name. Exactly these shapes are taken:
//   -v | -ctrlinfo -aN | -ctrlinfo -aAll | -ldpdinfo -aN | -pdinfo [-nosmart | -pd[E:D]] -aN
// and "-nosmart" only when takesNoSmart says that the tool's version knows it.
[[nodiscard]] std::variant<Command, Rejected> ParseCommand(const std::vector<std::string>& arguments,
                                                           bool takesNoSmart);

// Whether a tool of this version knows "-nosmart": two dotted parts, the first 4 or more ("4.1", not
// "4.1.2").
[[nodiscard]] bool VersionTakesNoSmart(std::string_view version);

}  // namespace vdksim
