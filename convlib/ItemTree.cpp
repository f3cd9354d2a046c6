#include "convlib/ItemTree.h"

#include "convlib/NameTable.h"

#include <stdexcept>
#include <string_view>

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
    NameTable lastOfName([this](Index node) { return std::string_view(m_Nodes[node].item->m_Name); });
    static_assert(decltype(lastOfName)::kNone == kDocument, "a parent that is not found is the document");
    for (const CItemDisp* entry : items) {
        if (entry == nullptr) {
            continue;
        }
        const Index parent = entry->m_ParentName.empty() ? kDocument : lastOfName.Find(entry->m_ParentName);
        m_Nodes.push_back({static_cast<const DisplayItem*>(entry), kNone, parent});
        // Entered only now: an item is never its own parent.
        lastOfName.Enter(static_cast<Index>(m_Nodes.size() - 1));
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
