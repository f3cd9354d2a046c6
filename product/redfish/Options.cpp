#include "Options.h"

#include "Refusals.h"
#include "basics/Words.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace redfish {
namespace {

using Refused = std::optional<http::Response>;

constexpr std::string_view kOnly = "only";
constexpr std::size_t kMostParts = 64;  ///< of a selection, and of a path in it

/// ".($levels=2)"; the standard has nothing else in the parentheses.
Refused ReadExpansion(const std::string& text, Options& options) {
    constexpr std::string_view kBegin = "($levels=";
    std::string_view rest = text;
    Expansion expansion;
    const char which = rest.empty() ? '\0' : rest.front();
    expansion.isOutside = which == '.' || which == '*';
    expansion.isInLinks = which == '~' || which == '*';
    rest.remove_prefix(rest.empty() ? 0 : 1);
    bool isWell = expansion.isOutside || expansion.isInLinks;
    if (!rest.empty()) {
        isWell = isWell && rest.starts_with(kBegin) && rest.ends_with(')');
        rest = isWell ? rest.substr(kBegin.size(), rest.size() - kBegin.size() - 1) : std::string_view();
        const std::optional<std::uint64_t> levels = basics::NumberFrom<std::uint64_t>(rest);
        isWell = isWell && levels.has_value();
        if (isWell && (*levels < 1 || *levels > kMostLevels)) {
            return Refuse(Complaint::QueryRange,
                          {std::string(rest), "$expand", "1-" + std::to_string(kMostLevels)});
        }
        expansion.levels = isWell ? static_cast<unsigned>(*levels) : 1;
    }
    if (!isWell) {
        return Refuse(Complaint::QueryFormat, {text, "$expand"});
    }
    options.expansion = expansion;
    return std::nullopt;
}

Refused ReadSelection(const std::string& text, Options& options) {
    const std::vector<std::string_view> paths = basics::Words(text, ",");
    if (paths.empty() || paths.size() > kMostParts) {
        return Refuse(Complaint::QueryFormat, {text, "$select"});
    }
    for (const std::string_view path : paths) {
        const std::vector<std::string_view> names = basics::Words(basics::Trimmed(path), "/");
        if (names.empty() || names.size() > kMostParts) {
            return Refuse(Complaint::QueryFormat, {text, "$select"});
        }
        Selection* inner = &options.selection;
        for (const std::string_view name : names) {
            inner = &inner->parts[std::string(name)];
        }
        inner->parts.clear();
    }
    return std::nullopt;
}

Refused ReadCount(const http::Field& field, std::optional<std::uint64_t>& count) {
    count = basics::NumberFrom<std::uint64_t>(field.second);
    if (count) {
        return std::nullopt;
    }
    const bool isNegative = basics::NumberFrom<std::int64_t>(field.second).has_value();
    return isNegative ? Refuse(Complaint::QueryRange, {field.second, field.first, "0 and above"})
                      : Refuse(Complaint::QueryType, {field.second, field.first});
}

Refused Read(const http::Field& field, Kind kind, Options& options) {
    const std::string& name = field.first;
    const bool isCollection = IsCollection(kind);
    if (name == kOnly) {
        options.isOnly = true;
        return isCollection ? Refused() : Refuse(Complaint::QueryNotOnResource);
    }
    if (name == "$top" || name == "$skip") {
        return isCollection ? ReadCount(field, name == "$top" ? options.top : options.skip)
                            : Refuse(Complaint::QueryNotOnResource);
    }
    if (name != "$expand" && name != "$select") {
        return Refuse(Complaint::QueryUnsupported);
    }
    if (TypeOf(kind) == nullptr) {
        return Refuse(Complaint::QueryNotOnResource);
    }
    return name == "$expand" ? ReadExpansion(field.second, options) : ReadSelection(field.second, options);
}

bool IsOption(const http::Field& field) {
    return field.first == kOnly || field.first.starts_with('$');
}

/// Whether a property is there for another one, or for the resource as such: "Members@odata.count",
/// "@odata.id".
bool IsWanted(std::string_view name, const Selection& selection) {
    return selection.parts.contains(name.substr(0, name.find('@'))) || name.starts_with("@odata.") ||
           selection.parts.contains(name);
}

}  // namespace

std::variant<Options, http::Response> ReadOptions(const http::Request& request, Kind kind) {
    Options options;
    std::set<std::string_view> seen;
    for (const http::Field& field : request.query) {
        if (!IsOption(field)) {
            continue;
        }
        if (!seen.insert(field.first).second) {
            return Refuse(Complaint::QueryCombination);
        }
        if (Refused refused = Read(field, kind, options)) {
            return *std::move(refused);
        }
    }
    if (options.isOnly && (options.top || options.skip)) {
        return Refuse(Complaint::QueryCombination);
    }
    return options;
}

bool HasOptions(const http::Request& request) {
    return std::any_of(request.query.begin(), request.query.end(), IsOption);
}

Value Selected(Value value, const Selection& selection) {
    if (selection.parts.empty()) {
        return value;
    }
    if (value.is_array()) {
        for (Value& each : value) {
            each = Selected(std::move(each), selection);
        }
        return value;
    }
    if (!value.is_object()) {
        return value;
    }
    Value selected = Value::object();
    for (const auto& [name, part] : value.items()) {
        const auto found = selection.parts.find(name);
        if (IsWanted(name, selection)) {
            selected[name] = found == selection.parts.end() ? part : Selected(part, found->second);
        }
    }
    return selected;
}

void Cut(Value& collection, const Options& options) {
    if (!options.top && !options.skip) {
        return;
    }
    Value& members = collection["Members"];
    const std::uint64_t first = std::min<std::uint64_t>(options.skip.value_or(0), members.size());
    const std::uint64_t count =
        std::min<std::uint64_t>(options.top.value_or(members.size()), members.size() - first);
    Value kept = Value::array();
    for (std::uint64_t each = first; each < first + count; ++each) {
        kept.push_back(std::move(members[static_cast<std::size_t>(each)]));
    }
    members = std::move(kept);
}

}  // namespace redfish
