#include "convlib/ItemTree.h"

#include <stdexcept>

namespace convlib {

ItemTree::ItemTree(const ItemList& items, std::size_t maxItems) {
    if (items.size() > maxItems) {
        throw std::length_error("too many items");
    }
    m_Nodes.reserve(items.size() + 1);
    m_Nodes.push_back({nullptr, kNone, kNone});
    FindParents(NumberParentNames(items));
    LinkChildren();
}

/// Leaves in each node the number of its parent's name. Most lists have few of these, however many names.
NameTable ItemTree::NumberParentNames(const ItemList& items) {
    NameTable names;
    for (const CItemDisp* const item : items) {
        if (item != nullptr) {
            const Index number =
                item->m_ParentName.empty() ? NameTable::kNone : names.NumberOf(item->m_ParentName);
            m_Nodes.push_back({static_cast<const DisplayItem*>(item), kNone, number});
        }
    }
    return names;
}

void ItemTree::FindParents(const NameTable& parentNames) {
    std::vector<Index> lastOfName(parentNames.Size(), kDocument);
    for (Index index = kDocument + 1; index < m_Nodes.size(); ++index) {
        Node& node = m_Nodes[index];
        node.link = node.link == NameTable::kNone ? kDocument : lastOfName[node.link];
        // Entered only now: an item is never its own parent.
        const Index number = parentNames.Find(node.item->m_Name);
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
