#include "inventory/Changes.h"

#include "inventory/Health.h"
#include "inventory/Server.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace inventory {
namespace {

constexpr std::string_view kBetween = " / ";  // a section's name and its key's

/// Names with what belongs to them, in order; a name that occurs again is numbered.
template <typename Content>
class Register final {
  public:
    void Add(std::string name, Content content) {
        const std::size_t occurrence = ++m_Occurrences[name];
        if (occurrence > 1) {
            name.append(" (").append(std::to_string(occurrence)).append(")");
        }
        m_Numbers.emplace(name, m_Entries.size());
        m_Entries.emplace_back(std::move(name), std::move(content));
    }

    [[nodiscard]] const Content* Find(const std::string& name) const {
        const auto found = m_Numbers.find(name);
        return found == m_Numbers.end() ? nullptr : &m_Entries[found->second].second;
    }

    [[nodiscard]] const std::vector<std::pair<std::string, Content>>& Entries() const { return m_Entries; }

  private:
    std::vector<std::pair<std::string, Content>> m_Entries;
    std::unordered_map<std::string, std::size_t> m_Numbers;
    std::unordered_map<std::string, std::size_t> m_Occurrences;
};

/// Names on both sides, in an order in which those of one side keep theirs: what vanished stands where it
/// was.
template <typename Content>
std::vector<std::string> NamesOf(const Register<Content>& before, const Register<Content>& after) {
    std::vector<std::string> names;
    std::unordered_set<std::string> taken;
    auto next = after.Entries().begin();
    const auto take = [&](const std::string& name) {
        if (taken.insert(name).second) {
            names.push_back(name);
        }
    };
    for (const auto& [name, content] : before.Entries()) {
        if (after.Find(name) != nullptr) {
            for (; next != after.Entries().end() && before.Find(next->first) == nullptr; ++next) {
                take(next->first);
            }
        }
        take(name);
        if (next != after.Entries().end() && next->first == name) {
            ++next;
        }
    }
    for (; next != after.Entries().end(); ++next) {
        take(next->first);
    }
    return names;
}

using Values = Register<std::string>;

std::string LabelOf(const Item& item) {
    constexpr std::string_view kBegin = "### ";
    constexpr std::string_view kEnd = " ###";
    std::string label = item.name;
    if (label.size() > kBegin.size() + kEnd.size() && label.starts_with(kBegin) && label.ends_with(kEnd)) {
        label = label.substr(kBegin.size(), label.size() - kBegin.size() - kEnd.size());
    }
    // Of several lists of one name, each is known by the drive that it is about; of a table's rows, by the
    // attribute.
    for (const std::string_view key : {"LD No.", "PD No."}) {
        if (label.ends_with("List") || label.starts_with("Associated")) {
            const std::string number = ValueOf(item, key);
            label += number.empty() ? "" : " " + number;
        }
    }
    for (const std::string_view key : {"ID", "Attribute"}) {
        if (label.starts_with("SMART Detail(")) {
            const std::string value = ValueOf(item, key);
            label += value.empty() ? "" : " " + value;
        }
    }
    return label;
}

void Collect(const Item& parent, const std::string& path, Values& values) {
    for (const Item& item : ChildrenOf(parent)) {
        std::string name = path;
        name.append(path.empty() ? "" : kBetween).append(LabelOf(item));
        if (item.isPlaceholder) {
            values.Add(name, "(not told)");
        } else if (item.hasValue || ChildrenOf(item).IsEmpty()) {
            values.Add(name, item.value);
        }
        Collect(item, name, values);
    }
}

using Places = Register<Values>;

void AddPlace(Places& places, std::string name, const Item& root) {
    Values values;
    if (root.hasValue) {
        values.Add(root.name, root.value);
    }
    Collect(root, "", values);
    places.Add(std::move(name), std::move(values));
}

std::string PlaceOfDrive(const Controller& controller, const Drive& drive) {
    Finding place;
    place.controller = controller.number;
    place.enclosure = drive.enclosure;
    place.slot = drive.slot;
    place.part = drive.slot.empty() ? (drive.number.empty() ? "a drive" : drive.number) : "the drive";
    return PlaceOf(place);
}

Places PlacesOf(const Document& document) {
    Places places;
    std::unordered_set<const Item*> known;
    const Server server = Survey(document);
    for (const Controller& controller : server.controllers) {
        Finding place;
        place.controller = controller.number;
        place.part = controller.number.empty() ? "a controller" : "";
        if (controller.item != nullptr) {
            AddPlace(places, PlaceOf(place), *controller.item);
            known.insert(controller.item);
        }
        for (const Group& group : controller.groups) {
            place.part = group.number.empty() ? "a group" : group.number;
            AddPlace(places, PlaceOf(place), *group.item);
            known.insert(group.item);
        }
        for (const Drive& drive : controller.drives) {
            AddPlace(places, PlaceOfDrive(controller, drive), *drive.item);
            known.insert(drive.item);
        }
    }
    for (const Item& root : document.Roots()) {
        if (!known.contains(&root)) {
            AddPlace(places, "document, " + LabelOf(root), root);
        }
    }
    return places;
}

void Compare(const std::string& place, const Values& before, const Values& after,
             std::vector<Change>& changes) {
    for (const std::string& key : NamesOf(before, after)) {
        const std::string* const old = before.Find(key);
        const std::string* const now = after.Find(key);
        if (old == nullptr) {
            changes.push_back({Change::Kind::Appeared, place, key, "", *now});
        } else if (now == nullptr) {
            changes.push_back({Change::Kind::Vanished, place, key, *old, ""});
        } else if (*old != *now) {
            changes.push_back({Change::Kind::Changed, place, key, *old, *now});
        }
    }
}

}  // namespace

std::vector<Change> ChangesBetween(const Document& before, const Document& after) {
    const Places old = PlacesOf(before);
    const Places now = PlacesOf(after);
    std::vector<Change> changes;
    for (const std::string& place : NamesOf(old, now)) {
        const Values* const oldValues = old.Find(place);
        const Values* const newValues = now.Find(place);
        if (oldValues == nullptr) {
            changes.push_back({Change::Kind::Appeared, place, "", "", ""});
        } else if (newValues == nullptr) {
            changes.push_back({Change::Kind::Vanished, place, "", "", ""});
        } else {
            Compare(place, *oldValues, *newValues, changes);
        }
    }
    return changes;
}

bool IsOnlyMovement(const Change& change) {
    constexpr std::string_view kMoving[] = {"Temperature", "Voltage",       "Relative State of Charge",
                                            "Capacitance", "Power-On Time", "Remaining Capacity",
                                            "Current"};
    const std::size_t slash = change.key.rfind(kBetween);
    const std::string_view name = slash == std::string::npos
                                      ? change.key
                                      : std::string_view(change.key).substr(slash + kBetween.size());
    return change.kind == Change::Kind::Changed &&
           std::find(std::begin(kMoving), std::end(kMoving), name) != std::end(kMoving);
}

}  // namespace inventory
