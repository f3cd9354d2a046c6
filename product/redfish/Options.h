#pragma once

#include "Types.h"
#include "http/Message.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <variant>

namespace redfish {

/// How deep a client may expand; the service root says so.
inline constexpr unsigned kMostLevels = 6;

/// The properties that a client wants: "Name,Status/Health" is {"Name": {}, "Status": {"Health": {}}}.
/// Without any, all of them.
struct Selection {
    std::map<std::string, Selection, std::less<>> parts;
};

/// Which links are to be replaced by what they lead to.
struct Expansion {
    bool isOutside = false;  ///< those that are not in "Links": "." and "*"
    bool isInLinks = false;  ///< those in "Links": "~" and "*"
    unsigned levels = 1;
};

/// What a request wants beside the resource as it is:
///
///     ?$skip=20&$top=10&$select=Name,Status/Health&$expand=.($levels=2)
struct Options {
    bool isOnly = false;  ///< the one member in place of the collection
    std::optional<std::uint64_t> top, skip;
    std::optional<Expansion> expansion;
    Selection selection;

    [[nodiscard]] bool IsPlain() const {
        return !isOnly && !top && !skip && !expansion && selection.parts.empty();
    }
};

/// Of a request that is about something of that kind; or why it is refused. What does not begin with "$" and
/// is not known is passed over, as the standard has it.
[[nodiscard]] std::variant<Options, http::Response> ReadOptions(const http::Request& request, Kind kind);

/// Whether any parameter begins with "$", or is "only".
[[nodiscard]] bool HasOptions(const http::Request& request);

/// The object with nothing but what is selected, and what names it: "@odata.id", "@odata.type".
[[nodiscard]] Value Selected(Value value, const Selection& selection);

/// Leaves out members of a collection, which goes on to count all of them.
void Cut(Value& collection, const Options& options);

}  // namespace redfish
