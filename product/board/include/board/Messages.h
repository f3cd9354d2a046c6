#pragma once

#include "board/Board.h"
#include "inventory/Criteria.h"
#include "inventory/Snapshot.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace board {

// What the service and its doors tell each other. Every message is a plain value; `Pack` makes its bytes,
// `Unpack...` reads them, or throws WireError. Both ends come from one build and know the same messages.

/// What stands in front of a message.
enum class MessageKind : std::uint32_t {
    Settings = 1,  ///< to the doors: the first one
    Drives = 2,    ///< to the doors: SMART data that were told
    Report = 3,    ///< to the doors: all else that the board is made of
    Outcome = 4,   ///< to the doors: what came of a call
    Call = 5,      ///< to the service
};

/// What the doors have to know before the first client comes. Files are read by the service: the doors open
/// none.
struct Settings {
    struct Listener {
        std::uint32_t descriptor = 0;  ///< that the process inherits
        bool isEncrypted = false;
    };
    std::vector<Listener> listeners{};
    std::string key{}, certificate{};       ///< in PEM
    std::optional<std::string> accounts{};  ///< the text of the file; nothing: who can connect may ask
    std::vector<std::string>
        metricsFrom{};                   ///< addresses and nets that may ask for /metrics without an account
    std::uint32_t user = 0, group = 0;   ///< to become, where the process may
    std::chrono::seconds interval{300};  ///< from one inquiry to the next
};
[[nodiscard]] std::string Pack(const Settings& settings);
[[nodiscard]] Settings UnpackSettings(std::string_view bytes);

/// SMART data of a drive: its document.
struct DriveReport {
    std::string controller, enclosure, slot, document;
};
[[nodiscard]] std::string Pack(const std::vector<DriveReport>& drives);
[[nodiscard]] std::vector<DriveReport> UnpackDrives(std::string_view bytes);

/// How the server is, without the SMART data.
struct Report {
    std::uint64_t number = 0;
    std::string host{};
    TimePoint startedAt{};
    std::string document{};      ///< the latest answer; empty before the first one
    TimePoint takenAt{};         ///< and when it was asked for
    inventory::ToolRuns runs{};  ///< of the tool, behind it; none where they were not watched
    inventory::Criteria criteria{};
    std::optional<LastInquiry> inquiry{};
    std::vector<StandingAlarm> alarms{};
    std::vector<NumberedEvent> events{};
};
[[nodiscard]] std::string Pack(const Report& report);
[[nodiscard]] Report UnpackReport(std::string_view bytes);

/// What a client wants the service to do. It has nothing in it that the service would have to take apart.
struct Call {
    enum class What : std::uint32_t {
        GetInfo = 1,
        GetPDInfo = 2,
        Refresh = 3,
        HistoryPage = 4,  ///< of the part, or of all; comes as the document
        HistoryJson = 5,
    };
    std::uint64_t id = 0;
    What what = What::Refresh;
    std::optional<std::int64_t> controller{}, enclosure{},
        slot{};                           ///< of GetPDInfo, as far as they are given
    std::optional<std::string> appKey{};  ///< as the caller carries it; at most kMostKey bytes
    std::optional<std::string> part{};    ///< its key in the history; likewise
};
constexpr std::size_t kMostKey = 256;
[[nodiscard]] std::string Pack(const Call& call);
[[nodiscard]] Call UnpackCall(std::string_view bytes);

/// What came of it.
struct Outcome {
    std::uint64_t id = 0;
    std::string failure{};  ///< why nothing came of it; empty: the call was made
    std::uint32_t status = 0;
    std::optional<std::uint32_t> returnValue{};
    std::optional<std::string> document{};
};
[[nodiscard]] std::string Pack(const Outcome& outcome);
[[nodiscard]] Outcome UnpackOutcome(std::string_view bytes);

}  // namespace board
