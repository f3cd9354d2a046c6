#include "ItemTree.h"

#include <span>
#include <string_view>
#include <unordered_map>

namespace convlib {
namespace {

void AppendChild(ItemNode& parent, ItemNode& child) {
    child.parent = &parent;
    (parent.lastChild == nullptr ? parent.firstChild : parent.lastChild->nextSibling) = &child;
    parent.lastChild = &child;
}

}  // namespace

ItemTree::ItemTree(const ItemList& items) {
    m_Nodes.reserve(items.size() + 1);  // Nodes point at one another and must not be moved.
    ItemNode& document = m_Nodes.emplace_back();
    // By the names of parents alone: lists have few of these, however many names there are.
    std::unordered_map<std::string_view, ItemNode*> nearest;
    for (const CItemDisp* const each : items) {
        if (each != nullptr) {
            m_Nodes.emplace_back().item = static_cast<const DisplayItem*>(each);
            nearest.try_emplace(each->m_ParentName, &document);
        }
    }
    for (ItemNode& node : std::span(m_Nodes).subspan(1)) {
        AppendChild(*nearest.at(node.item->m_ParentName), node);
        // Entered only now: an item is never its own parent. "" stays the document's.
        const auto own = nearest.find(node.item->m_Name);
        if (own != nearest.end() && !own->first.empty()) {
            own->second = &node;
        }
    }
}

}  // namespace convlib
