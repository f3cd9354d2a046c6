#pragma once

#include "inventory/Expectations.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace inventory {

/// Where somebody wants to be warned, beside the rules that hold for all. What a report does not tell as a
/// number is not compared.
struct Limits {
    std::optional<double> temperature = {};              ///< degrees Celsius that a drive may have
    std::optional<std::uint64_t> mediaErrors = {};       ///< that a drive may have
    std::optional<std::uint64_t> mediaErrorGrowth = {};  ///< since the expectations were saved
    std::optional<std::size_t> spares = {};              ///< that a controller with groups has to have
    bool operator==(const Limits&) const = default;
};

/// By what a server is judged beside the rules that hold for all.
struct Criteria {
    std::optional<Expectations> expectations = {};
    Limits limits = {};
    std::string today = {};  ///< in UTC: "2031-06-30"; for what is accepted until a day
};

}  // namespace inventory
