#pragma once

#include "inventory/Level.h"

#include <string>
#include <string_view>

namespace inventory {

/// What a finding is about.
enum class PartKind { Controller, Unit, Group, LogicalDrive, Drive };

/// By what kind of rule something is not well. A part has at most one finding by each.
enum class Rule {
    State,        ///< what the reports tell of it
    Repetition,   ///< they tell it more than once
    Presence,     ///< it is gone, new, or another one than expected
    Place,        ///< it is expected in another slot
    Use,          ///< it is used otherwise than expected
    Temperature,  ///< limits
    MediaErrors,
    MediaErrorGrowth,
    Spares,
};

/// Something that is not well.
struct Finding {
    Level level = Level::Unknown;
    PartKind kind = PartKind::Controller;
    Rule rule = Rule::State;
    std::string controller = {};  ///< its number; empty where no controller is named
    std::string group = {};       ///< "RG1"; empty where none is concerned
    std::string part = {};        ///< "PD9", "LD1", "Battery Backup Unit"; empty for the controller itself
    std::string enclosure = {}, slot = {};  ///< of a drive
    std::string product = {}, serial = {};  ///< of a drive: its model and its serial number
    std::string what = {};                  ///< "FAILED"; "DEGRADED, nothing is being rebuilt"
    bool isAccepted = false;                ///< known, and not counted
    std::string until = {};   ///< the last day on which it is accepted, or was; empty where it never was
    std::string reason = {};  ///< why it is accepted
};

/// "drive", "logical-drive"; as programs are told.
[[nodiscard]] std::string_view NameOf(PartKind kind);
/// "state", "media-error-growth"; as programs are told.
[[nodiscard]] std::string_view NameOf(Rule rule);

/// The place of a finding: "controller 0, RG1, PD9 in enclosure 16 slot 1".
[[nodiscard]] std::string PlaceOf(const Finding& finding);

/// Which drive it is, whatever slot it is put into: "TF600S15, serial number 7K00025200C4"; empty of other
/// parts.
[[nodiscard]] std::string IdentityOf(const Finding& finding);

/// "accepted until 2031-06-30: replacement ordered"; "no longer accepted since 2031-06-30: ..."; empty of
/// most.
[[nodiscard]] std::string AcceptanceNoteOf(const Finding& finding);

/// All of it: "controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED (TF600S15, serial number 7K00025200C4)".
[[nodiscard]] std::string Describe(const Finding& finding);

/// "CRITICAL"; "ACCEPTED" of one that does not count.
[[nodiscard]] std::string_view NameOfLevel(const Finding& finding);

}  // namespace inventory
