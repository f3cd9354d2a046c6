#include "ItemTree.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace convlib {
namespace {

/// In the place of the hash of a parent's name: it is that of the item before, as it mostly is.
constexpr NameHash kAsBefore = kNoHash;

}  // namespace

ItemTree::ItemTree(const ItemList& items, std::size_t maxItems) {
    if (items.size() > maxItems) {
        throw std::length_error("too many items");
    }
    TakeItems(items);
    FindParents(NumberParentNames());
    LinkChildren();
}

void ItemTree::TakeItems(const ItemList& items) {
    m_Nodes.reserve(items.size() + 1);
    m_Nodes.push_back({nullptr, kNone, kNone});
    std::string_view parentName;
    for (const CItemDisp* const each : items) {
        if (each != nullptr) {
            const auto& item = static_cast<const DisplayItem&>(*each);
            const bool isAsBefore = item.m_ParentName == parentName;
            parentName = item.m_ParentName;
            m_Nodes.push_back({&item, HashOf(item.m_Name), isAsBefore ? kAsBefore : HashOf(parentName)});
        }
    }
}

/// Leaves in each node the number of its parent's name. Most lists have few of these, however many names.
NameTable ItemTree::NumberParentNames() {
    NameFilter ownNames(m_Nodes.size());
    for (std::size_t index = kDocument + 1; index < m_Nodes.size(); ++index) {
        ownNames.Add(m_Nodes[index].firstChild);
    }
    NameTable parentNames;
    Index number = NameTable::kNone;
    for (std::size_t index = kDocument + 1; index < m_Nodes.size(); ++index) {
        Node& node = m_Nodes[index];
        if (node.link != kAsBefore) {
            const bool mayBeFound = ownNames.MayHold(node.link) && !node.item->m_ParentName.empty();
            number = mayBeFound ? parentNames.NumberOf(node.item->m_ParentName, node.link) : NameTable::kNone;
        }
        node.link = number;
    }
    return parentNames;
}

void ItemTree::FindParents(const NameTable& parentNames) {
    std::vector<Index> lastOfName(parentNames.Size(), kDocument);
    for (Index index = kDocument + 1; index < m_Nodes.size(); ++index) {
        Node& node = m_Nodes[index];
        node.link = node.link == NameTable::kNone ? kDocument : lastOfName[node.link];
        // Entered only now: an item is never its own parent.
        const Index number = parentNames.Find(node.item->m_Name, std::exchange(node.firstChild, kNone));
        if (number != NameTable::kNone) {
            lastOfName[number] = index;
        }
    }
}

/// Goes backwards, so that each node becomes the head of its parent's children in front of those behind it.
void ItemTree::LinkChildren() {
    for (std::size_t index = m_Nodes.size() - 1; index > kDocument; --index) {
        Node& node = m_Nodes[index];
        Node& parent = m_Nodes[node.link];
        node.link = parent.firstChild;
        parent.firstChild = static_cast<Index>(index);
    }
}

}  // namespace convlib
