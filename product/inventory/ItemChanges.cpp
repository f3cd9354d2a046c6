#include "ItemChanges.h"

#include "BothSides.h"
#include "Labels.h"
#include "Movement.h"
#include "Titles.h"
#include "basics/Identifiers.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace inventory {
namespace {

using Kind = Change::Kind;

/// Where an item stands below its part.
struct Path {
    const Path* above;
    std::string_view label;
};

std::string TextOf(const Path& path) {
    return (path.above == nullptr ? "" : TextOf(*path.above) + " / ") + std::string(path.label);
}

/// Whether an item says something of itself, and does not only hold others.
bool IsTold(const Item& item) {
    return item.isPlaceholder || item.hasValue || ChildrenOf(item).IsEmpty();
}

/// Nothing for one that is not there, or is a placeholder.
std::optional<std::string> ToldBy(const Item* item) {
    return item == nullptr || item->isPlaceholder ? std::nullopt : std::optional(item->value);
}

bool IsSameValue(const Item& one, const Item& other) {
    return one.isPlaceholder == other.isPlaceholder && (one.isPlaceholder || one.value == other.value);
}

bool IsSameItem(const Item& one, const Item& other) {
    return one.size == other.size && one.hasValue == other.hasValue && one.name == other.name &&
           IsSameValue(one, other);
}

bool IsSameWithAllBelow(const Item& one, const Item& other) {
    return one.size == other.size && std::equal(&one, &one + one.size, &other, IsSameItem);
}

/// One of the items below another, as it is looked for on the other side.
struct Child {
    const Item* item;
    std::string label;   ///< numbered where it occurs again
    std::size_t member;  ///< of a group's member, which of the later document's parts it is
};

bool IsSameChild(const Child& one, const Child& other) {
    return one.member == other.member && (one.member != kNowhere || one.label == other.label);
}

/// For each of the earlier ones, which of the later is the same.
std::vector<std::size_t> PartnersOf(const std::vector<Child>& before, const std::vector<Child>& after) {
    const auto keyOf = [](const Child& child) {
        return child.member == kNowhere ? child.label : std::string(1, '\0') + std::to_string(child.member);
    };
    std::vector<std::size_t> partners(before.size(), kNowhere);
    if (std::equal(before.begin(), before.end(), after.begin(), after.end(), IsSameChild)) {
        for (std::size_t place = 0; place < partners.size(); ++place) {
            partners[place] = place;
        }
        return partners;
    }
    std::unordered_map<std::string, std::vector<std::size_t>> waiting;
    for (std::size_t now = after.size(); now-- > 0;) {
        waiting[keyOf(after[now])].push_back(now);
    }
    for (std::size_t old = 0; old < before.size(); ++old) {
        const auto found = waiting.find(keyOf(before[old]));
        if (found != waiting.end() && !found->second.empty()) {
            partners[old] = found->second.back();
            found->second.pop_back();
        }
    }
    return partners;
}

bool IsIdentity(const Item& section, std::string_view key) {
    return section.name == kGeneral && (key == "Serial Number" || key == "Product ID");
}

class ItemComparison final {
  public:
    ItemComparison(const Part& before, const Part& after, const ItemChangesRequest& request, Changes& changes)
        : m_Request(request),
          m_Changes(changes),
          m_Part(after.words),
          m_IsMoved(HasMoved(before, after)),
          m_IsReplaced(IsReplacement(before, after)) {}

    /// A root has a path of its own where it has a value; what is below it does without.
    void Run(const Item& before, const Item& after) {
        if (before.hasValue || after.hasValue) {
            const std::string label = LabelOf(after);
            const Path path{nullptr, label};
            Note(path, after, before.hasValue ? &before : nullptr, after.hasValue ? &after : nullptr);
        }
        CompareBelow(before, after, nullptr);
    }

  private:
    void CompareBelow(const Item& before, const Item& after, const Path* path) {
        if (IsSameWithAllBelow(before, after)) {
            return;
        }
        const std::vector<Child> old = ChildrenBefore(before);
        const std::vector<Child> now = ChildrenAfter(after);
        ForEachOnEitherSide(PartnersOf(old, now), now.size(), [&](std::size_t oldPlace, std::size_t place) {
            if (place == kNowhere) {
                TellAll(*old[oldPlace].item, before, {path, old[oldPlace].label}, Kind::Vanished);
            } else if (oldPlace == kNowhere) {
                TellAll(*now[place].item, after, {path, now[place].label}, Kind::Appeared);
            } else {
                const Path below{path, now[place].label};
                Note(below, after, old[oldPlace].item, now[place].item);
                CompareBelow(*old[oldPlace].item, *now[place].item, &below);
            }
        });
    }

    /// Everything that came or went with an item.
    void TellAll(const Item& item, const Item& parent, const Path& path, Kind kind) {
        Note(path, parent, kind == Kind::Vanished ? &item : nullptr,
             kind == Kind::Appeared ? &item : nullptr);
        std::vector<Child> children;
        for (const Item& child : ChildrenOf(item)) {
            children.push_back({&child, LabelOf(child), kNowhere});
        }
        NumberLabels(children);
        for (const Child& child : children) {
            TellAll(*child.item, item, {&path, child.label}, kind);
        }
    }

    /// Takes down what is different about an item, with null for the side that lacks it.
    void Note(const Path& path, const Item& parent, const Item* before, const Item* after) {
        before = before != nullptr && IsTold(*before) ? before : nullptr;
        after = after != nullptr && IsTold(*after) ? after : nullptr;
        const bool isChange = before != nullptr && after != nullptr;
        const bool isNothing = before == nullptr && after == nullptr;
        if (isNothing || (isChange && IsSameValue(*before, *after))) {
            return;
        }
        if (std::size_t* const leftOut = CountOfLeftOut(parent, before, after)) {
            ++*leftOut;
            return;
        }
        const Kind kind = isChange ? Kind::Changed : before == nullptr ? Kind::Appeared : Kind::Vanished;
        m_Changes.list.push_back({kind, m_Part, nullptr, TextOf(path), ToldBy(before), ToldBy(after)});
    }

    /// Where the change is to be counted instead of told; null: it is to be told.
    std::size_t* CountOfLeftOut(const Item& parent, const Item* before, const Item* after) {
        if (m_Request.hasAll) {
            return nullptr;
        }
        if (IsSaidByDrive(parent, after == nullptr ? *before : *after)) {
            return &m_Changes.repetitions;
        }
        if (before == nullptr || after == nullptr) {
            return nullptr;
        }
        if (IsSaidByMember(parent, after->name)) {
            return &m_Changes.repetitions;
        }
        if (basics::IsRedacted(before->value) || basics::IsRedacted(after->value)) {
            return &m_Changes.redactions;
        }
        return IsMovement(parent, *before, *after) ? &m_Changes.movements : nullptr;
    }

    /// Whether the change of this drive's place has said it, or its replacement: nobody compares the counters
    /// of two drives.
    [[nodiscard]] bool IsSaidByDrive(const Item& parent, const Item& item) const {
        if (m_IsMoved && (parent.name == kEnclosure || (parent.name == kGeneral && item.name == "PD No."))) {
            return true;
        }
        return m_IsReplaced && (IsIdentity(parent, item.name) || parent.name.starts_with("SMART Detail("));
    }

    /// Whether the group only follows its member, which tells of its new place or number itself.
    [[nodiscard]] bool IsSaidByMember(const Item& member, std::string_view key) const {
        const std::size_t drive = KnownMember(member);
        if (drive == kNowhere) {
            return false;
        }
        const Part& now = m_Request.after.All()[drive];
        const Part& old = m_Request.before.All()[now.partner];
        return key == "PD No." ? old.words->part != now.words->part
                               : (key == "Enclosure No." || key == "Slot No.") && HasMoved(old, now);
    }

    /// The drive, one that is on both sides, that an item of the later document names as a group's member.
    [[nodiscard]] std::size_t KnownMember(const Item& member) const {
        const std::size_t drive = m_Request.after.DriveOfMember(member);
        return drive == kNowhere || m_Request.after.All()[drive].partner == kNowhere ? kNowhere : drive;
    }

    [[nodiscard]] std::vector<Child> ChildrenBefore(const Item& parent) const {
        std::vector<Child> children;
        for (const Item& item : ChildrenOf(parent)) {
            const std::size_t drive = m_Request.before.DriveOfMember(item);
            children.push_back(
                {&item, LabelOf(item), drive == kNowhere ? kNowhere : m_Request.before.All()[drive].partner});
        }
        NumberLabels(children);
        return children;
    }

    [[nodiscard]] std::vector<Child> ChildrenAfter(const Item& parent) const {
        std::vector<Child> children;
        for (const Item& item : ChildrenOf(parent)) {
            children.push_back({&item, LabelOf(item), KnownMember(item)});
        }
        NumberLabels(children);
        return children;
    }

    static void NumberLabels(std::vector<Child>& children) {
        std::unordered_map<std::string, std::size_t> occurrences;
        for (Child& child : children) {
            if (const std::size_t occurrence = ++occurrences[child.label]; occurrence > 1) {
                child.label += " (" + std::to_string(occurrence) + ")";
            }
        }
    }

    const ItemChangesRequest& m_Request;
    Changes& m_Changes;
    std::shared_ptr<const ChangedPart> m_Part;
    bool m_IsMoved;
    bool m_IsReplaced;
};

}  // namespace

void CompareItems(const Part& before, const Part& after, const ItemChangesRequest& request,
                  Changes& changes) {
    ItemComparison(before, after, request, changes).Run(*before.root, *after.root);
}

}  // namespace inventory
