#include "convlib/ItemTree.h"

#include <stdexcept>
#include <string_view>
#include <unordered_map>

namespace convlib {

ItemTree::ItemTree(const ItemList& items, std::size_t maxItems) {
    if (items.size() > maxItems) {
        throw std::length_error("too many items");
    }
    m_Nodes.reserve(items.size() + 1);
    m_Nodes.push_back({nullptr, kNone, kNone});
    FindParents(items);
    LinkChildren();
}

void ItemTree::FindParents(const ItemList& items) {
    std::unordered_map<std::string_view, Index> lastOfName;
    for (const CItemDisp* entry : items) {
        if (entry == nullptr) {
            continue;
        }
        Index parent = kDocument;
        if (!entry->m_ParentName.empty()) {
            const auto found = lastOfName.find(entry->m_ParentName);
            parent = found == lastOfName.end() ? kDocument : found->second;
        }
        // Entered only now: an item is never its own parent.
        lastOfName.insert_or_assign(entry->m_Name, static_cast<Index>(m_Nodes.size()));
        m_Nodes.push_back({static_cast<const DisplayItem*>(entry), kNone, parent});
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
