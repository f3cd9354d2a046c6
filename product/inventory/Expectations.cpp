#include "inventory/Expectations.h"

#include "basics/NearestName.h"
#include "basics/Words.h"
#include "inventory/Measure.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <utility>

namespace inventory {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::uint64_t kExpectationsVersion = 1;

[[noreturn]] void Reject(const std::string& place, const std::string& why) {
    throw ExpectationsError(place.empty() ? why : place + ": " + why);
}

/// An object of the file. Its keys are taken one by one; what is left over then is a slip.
class Object final {
  public:
    Object(const Json& value, std::string place) : m_Value(value), m_Place(std::move(place)) {
        if (!value.is_object()) {
            Reject(m_Place.empty() ? "the file" : m_Place, "it is no object");
        }
    }

    /// "" where it is missing.
    std::string Text(const char* key) {
        const Json* const value = Take(key);
        if (value != nullptr && !value->is_string()) {
            Reject(PlaceOf(key), "it is no text");
        }
        return value == nullptr ? "" : value->get<std::string>();
    }

    std::string NeededText(const char* key) {
        std::string text = Text(key);
        if (text.empty()) {
            Reject(PlaceOf(key), "it is missing, or empty");
        }
        return text;
    }

    std::optional<std::uint64_t> Count(const char* key) {
        const Json* const value = Take(key);
        if (value != nullptr && !value->is_number_unsigned()) {
            Reject(PlaceOf(key), "it is no whole number");
        }
        return value == nullptr ? std::nullopt : std::optional(value->get<std::uint64_t>());
    }

    /// What `make` makes of each value in an array; nothing where it is missing.
    template <typename Make>
    auto Each(const char* key, Make make) {
        std::vector<decltype(make(std::declval<const Json&>(), std::string()))> parts;
        const Json* const value = Take(key);
        if (value != nullptr && !value->is_array()) {
            Reject(PlaceOf(key), "it is no list");
        }
        for (std::size_t number = 0; value != nullptr && number < value->size(); ++number) {
            parts.push_back(make((*value)[number], PlaceOf(key) + "[" + std::to_string(number) + "]"));
        }
        return parts;
    }

    [[nodiscard]] bool Has(const char* key) const { return m_Value.contains(key); }

    [[nodiscard]] std::string PlaceOf(const std::string& key) const {
        return m_Place.empty() ? key : m_Place + "." + key;
    }

    void RejectRest() const {
        for (const auto& [key, value] : m_Value.items()) {
            if (std::find(m_Known.begin(), m_Known.end(), key) == m_Known.end()) {
                const std::string nearest = basics::NearestName(m_Known, key);
                Reject(PlaceOf(key),
                       "there is no such key" + (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
            }
        }
    }

  private:
    const Json* Take(const char* key) {
        m_Known.emplace_back(key);
        const auto found = m_Value.find(key);
        return found == m_Value.end() || found->is_null() ? nullptr : &*found;
    }

    const Json& m_Value;
    std::string m_Place;
    std::vector<std::string> m_Known;
};

std::string TextFrom(const Json& value, const std::string& place) {
    if (!value.is_string()) {
        Reject(place, "it is no text");
    }
    return value.get<std::string>();
}

ExpectedGroup GroupFrom(const Json& value, const std::string& place) {
    Object object(value, place);
    ExpectedGroup group;
    group.number = object.NeededText("number");
    group.level = object.Text("raid_level");
    group.logicalDrives = object.Each("logical_drives", TextFrom);
    object.RejectRest();
    return group;
}

ExpectedDrive DriveFrom(const Json& value, const std::string& place) {
    Object object(value, place);
    ExpectedDrive drive;
    drive.enclosure = object.Text("enclosure");
    drive.slot = object.Text("slot");
    drive.product = object.Text("model");
    drive.serial = object.Text("serial");
    drive.role = object.Text("role");
    drive.mediaErrors = object.Count("media_errors");
    object.RejectRest();
    if (drive.slot.empty() && drive.serial.empty()) {
        Reject(place, "neither slot nor serial says which drive it is");
    }
    return drive;
}

ExpectedController ControllerFrom(const Json& value, const std::string& place) {
    Object object(value, place);
    ExpectedController controller;
    controller.number = object.NeededText("number");
    controller.product = object.Text("product");
    controller.serial = object.Text("serial");
    controller.groups = object.Each("groups", GroupFrom);
    controller.drives = object.Each("drives", DriveFrom);
    object.RejectRest();
    return controller;
}

Acceptance AcceptanceFrom(const Json& value, const std::string& place) {
    Object object(value, place);
    Acceptance acceptance;
    acceptance.place = object.NeededText("place");
    acceptance.serial = object.Text("serial");
    acceptance.what = object.NeededText("what");
    acceptance.until = object.NeededText("until");
    acceptance.reason = object.NeededText("reason");
    object.RejectRest();
    if (!IsDay(acceptance.until)) {
        Reject(object.PlaceOf("until"), "it is no day such as 2031-06-30");
    }
    return acceptance;
}

Json Parse(std::string_view text) {
    try {
        return Json::parse(text, nullptr, true, true);
    } catch (const Json::parse_error& error) {
        const std::size_t end = std::min<std::size_t>(error.byte, text.size());
        const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), '\n');
        Reject("line " + std::to_string(line), "it cannot be read as JSON");
    } catch (const Json::out_of_range&) {
        Reject("", "a number in it is too large");
    }
}

void Set(Json& object, const char* key, const std::string& text) {
    if (!text.empty()) {
        object[key] = text;
    }
}

template <typename Parts, typename Make>
Json Each(const Parts& parts, Make make) {
    Json list = Json::array();
    for (const auto& part : parts) {
        list.push_back(make(part));
    }
    return list;
}

Json FromGroup(const ExpectedGroup& group) {
    Json object = Json::object();
    object["number"] = group.number;
    Set(object, "raid_level", group.level);
    object["logical_drives"] = group.logicalDrives;
    return object;
}

Json FromDrive(const ExpectedDrive& drive) {
    Json object = Json::object();
    Set(object, "enclosure", drive.enclosure);
    Set(object, "slot", drive.slot);
    Set(object, "model", drive.product);
    Set(object, "serial", drive.serial);
    Set(object, "role", drive.role);
    if (drive.mediaErrors) {
        object["media_errors"] = *drive.mediaErrors;
    }
    return object;
}

Json FromController(const ExpectedController& controller) {
    Json object = Json::object();
    object["number"] = controller.number;
    Set(object, "product", controller.product);
    Set(object, "serial", controller.serial);
    object["groups"] = Each(controller.groups, FromGroup);
    object["drives"] = Each(controller.drives, FromDrive);
    return object;
}

Json FromAcceptance(const Acceptance& acceptance) {
    Json object = Json::object();
    object["place"] = acceptance.place;
    Set(object, "serial", acceptance.serial);
    object["what"] = acceptance.what;
    object["until"] = acceptance.until;
    object["reason"] = acceptance.reason;
    return object;
}

// Bytes that are no UTF-8 may come with a report.
std::string OnOneLine(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool HoldsParts(const Json& value) {
    return std::any_of(value.begin(), value.end(), [](const Json& each) {
        return each.is_object() || (each.is_array() && HoldsParts(each));
    });
}

/// As a person would lay it out: what holds no other parts takes one line.
void Lay(const Json& value, std::size_t indentation, std::string& text) {
    constexpr std::size_t kStep = 2;
    if (!value.is_structured() || !HoldsParts(value)) {
        std::string line = OnOneLine(value);
        if (value.is_object() && !value.empty()) {
            line.clear();
            for (const auto& [key, each] : value.items()) {
                line += (line.empty() ? "{ " : ", ") + OnOneLine(key) + ": " + OnOneLine(each);
            }
            line += " }";
        }
        text += line;
        return;
    }
    const char* separator = "\n";
    text += value.is_object() ? '{' : '[';
    for (const auto& [key, each] : value.items()) {
        text.append(separator).append(indentation + kStep, ' ');
        text += value.is_object() ? OnOneLine(key) + ": " : "";
        Lay(each, indentation + kStep, text);
        separator = ",\n";
    }
    text.append("\n").append(indentation, ' ');
    text += value.is_object() ? '}' : ']';
}

}  // namespace

Expectations ReadExpectations(std::string_view text) {
    const Json value = Parse(text);
    Object object(value, "");
    const std::optional<std::uint64_t> version = object.Count("version");
    if (version != kExpectationsVersion) {
        Reject("version", version ? "1 is known, not " + std::to_string(*version) : "it is missing");
    }
    Expectations expectations;
    expectations.host = object.Text("host");
    expectations.savedAt = object.Text("saved_at");
    if (object.Has("controllers")) {
        expectations.controllers = object.Each("controllers", ControllerFrom);
    }
    expectations.accepted = object.Each("accepted", AcceptanceFrom);
    object.RejectRest();
    return expectations;
}

std::string Text(const Expectations& expectations) {
    Json object = Json::object();
    object["version"] = kExpectationsVersion;
    Set(object, "host", expectations.host);
    Set(object, "saved_at", expectations.savedAt);
    if (expectations.controllers) {
        object["controllers"] = Each(*expectations.controllers, FromController);
    }
    object["accepted"] = Each(expectations.accepted, FromAcceptance);
    std::string text;
    Lay(object, 0, text);
    return text + '\n';
}

std::vector<ExpectedController> ExpectedOf(const Server& server) {
    std::vector<ExpectedController> expected;
    for (const Controller& controller : server.controllers) {
        if (controller.number.empty()) {
            continue;
        }
        ExpectedController& one = expected.emplace_back();
        one.number = controller.number;
        one.product = controller.product;
        one.serial = controller.serial;
        for (const Group& group : controller.groups) {
            if (group.number.empty()) {
                continue;
            }
            ExpectedGroup& saved = one.groups.emplace_back();
            saved.number = group.number;
            saved.level = group.level;
            for (const LogicalDrive& drive : group.logicalDrives) {
                saved.logicalDrives.push_back(drive.number);
            }
        }
        for (const Drive& drive : controller.drives) {
            if (drive.slot.empty() && drive.serial.empty()) {
                continue;
            }
            one.drives.push_back({drive.enclosure, drive.slot, drive.product, drive.serial, RoleOf(drive),
                                  CountFrom(drive.mediaErrors)});
        }
    }
    return expected;
}

Acceptance AcceptanceOf(const Finding& finding, const std::string& until, const std::string& reason) {
    return {PlaceOf(finding), finding.serial, finding.what, until, reason};
}

bool IsDay(std::string_view text) {
    using namespace std::chrono;
    constexpr std::size_t kSize = 10;  // 2031-06-30
    if (text.size() != kSize || text[4] != '-' || text[7] != '-') {
        return false;
    }
    const auto year = basics::NumberFrom<int>(text.substr(0, 4));
    const auto month = basics::NumberFrom<unsigned>(text.substr(5, 2));
    const auto day = basics::NumberFrom<unsigned>(text.substr(8));
    return year && *year > 0 && month && day &&
           year_month_day{std::chrono::year(*year), std::chrono::month(*month), std::chrono::day(*day)}.ok();
}

}  // namespace inventory
