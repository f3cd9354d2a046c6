#pragma once

#include "inventory/Finding.h"
#include "inventory/Server.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// Why a text holds no expectations, in one line: "line 12: ..." or "controllers[0].drives[2]: ...".
class ExpectationsError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct ExpectedGroup {
    std::string number, level;  ///< "RG0", "RAID 5"
    std::vector<std::string> logicalDrives;
};

/// What is empty is not compared.
struct ExpectedDrive {
    std::string enclosure, slot;
    std::string product, serial;
    std::string role;                          ///< as RoleOf tells it: "LD0", "global spare"
    std::optional<std::uint64_t> mediaErrors;  ///< when it was saved
};

struct ExpectedController {
    std::string number, product, serial;
    std::vector<ExpectedGroup> groups;
    std::vector<ExpectedDrive> drives;
};

/// A finding that is known and does not count: the part and its state, as they are printed, for a time.
struct Acceptance {
    std::string place;   ///< "controller 0, RG2, PD13 in enclosure 16 slot 5"
    std::string serial;  ///< of the drive; empty for any
    std::string what;    ///< "OFFLINE"
    std::string until;   ///< the last day on which it is, in UTC: "2031-06-30"
    std::string reason;
};

/// What a server ought to have, as people keep it in a file:
///
///     {
///       "version": 1,
///       "host": "storage7",
///       "saved_at": "2031-04-05T06:07:08Z",
///       "controllers": [
///         {
///           "number": "0",
///           "product": "Gate SR-4i",
///           "serial": "SR4I00120",
///           "groups": [
///             { "number": "RG0", "raid_level": "RAID 1", "logical_drives": ["LD0"] }
///           ],
///           "drives": [
///             { "enclosure": "252", "slot": "0", "model": "TF600S15", "serial": "7K00", "role": "LD0" }
///           ]
///         }
///       ],
///       "accepted": []
///     }
///
/// A plain value.
struct Expectations {
    std::string host, savedAt;
    /// Nothing: whatever is there is expected.
    std::optional<std::vector<ExpectedController>> controllers = {};
    std::vector<Acceptance> accepted = {};
};

/// Reads such a text, in which people may have written comments (`//` and `/* */`). Throws ExpectationsError
/// for anything but expectations of the known version.
[[nodiscard]] Expectations ReadExpectations(std::string_view text);

/// One part a line. Ends with a line feed; bytes that are no UTF-8 become U+FFFD.
[[nodiscard]] std::string Text(const Expectations& expectations);

/// What the server has, is what it ought to have; but for parts that nobody could find again.
[[nodiscard]] std::vector<ExpectedController> ExpectedOf(const Server& server);

/// Such a finding, known until then.
[[nodiscard]] Acceptance AcceptanceOf(const Finding& finding, const std::string& until,
                                      const std::string& reason);

/// Whether it is a day as "2031-06-30".
[[nodiscard]] bool IsDay(std::string_view text);

}  // namespace inventory
