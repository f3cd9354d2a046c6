#pragma once

#include "Options.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace redfish {

/// A resource, with the bytes that it takes when written.
struct Found {
    Value value;
    std::size_t size = 0;
};

/// What leads to no resource that may be put in a link's place, is nothing.
using Finder = std::function<std::optional<Found>(const std::string& path)>;

/// Replaces links by what they lead to. False where that would be more than a client is sent; the value is of
/// no use then.
[[nodiscard]] bool Expand(Value& value, const Expansion& expansion, const Finder& find);

}  // namespace redfish
