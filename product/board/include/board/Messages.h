#pragma once

#include "board/Board.h"
#include "inventory/Criteria.h"

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
    Drives = 1,   ///< to the doors: SMART data that were told
    Report = 2,   ///< to the doors: all else that the board is made of
    Outcome = 3,  ///< to the doors: what came of a call
    Call = 4,     ///< to the service
};

/// SMART data of a drive: its document.
struct DriveReport {
    std::string controller, enclosure, slot, document;
};
[[nodiscard]] std::string Pack(const std::vector<DriveReport>& drives);
[[nodiscard]] std::vector<DriveReport> UnpackDrives(std::string_view bytes);

/// How the server is, without the SMART data.
struct Report {
    std::uint64_t number = 0;
    std::string host;
    TimePoint startedAt;
    std::string document;  ///< the latest answer; empty before the first one
    TimePoint takenAt;     ///< and when it was asked for
    inventory::Criteria criteria;
    std::optional<LastInquiry> inquiry{};
    std::vector<StandingAlarm> alarms{};
    std::vector<NumberedEvent> events{};
};
[[nodiscard]] std::string Pack(const Report& report);
[[nodiscard]] Report UnpackReport(std::string_view bytes);

/// What a client wants the service to do. It has nothing in it that the service would have to take apart.
struct Call {
    enum class What : std::uint32_t { GetInfo = 1, GetPDInfo = 2, Refresh = 3 };
    std::uint64_t id = 0;
    What what = What::Refresh;
    std::int64_t controller = 0, enclosure = 0, slot = 0;  ///< of GetPDInfo
    std::optional<std::string> appKey{};  ///< as the caller carries it; at most kMostKey bytes
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
