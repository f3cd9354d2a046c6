#pragma once

#include "DisplayItem.h"

#include <vector>

namespace convlib {

/// An item's place in the tree. The document, under which every other one stands, has no item and no parent.
struct ItemNode {
    const DisplayItem* item = nullptr;
    const ItemNode* parent = nullptr;
    ItemNode* firstChild = nullptr;
    ItemNode* lastChild = nullptr;
    ItemNode* nextSibling = nullptr;
};

/// The tree that an item list describes through its parent names. An item stands under the nearest item
/// before it that bears its parent's name, or under the document when its parent name is "" or borne by no
/// item before it; children keep the order of the list. Null entries are passed over.
///
/// Built in time linear in the items, unless their names collide as hashes. The tree looks at the items,
/// which must stay as they are while it is used. The constructor throws what allocation throws.
class ItemTree final {
  public:
    explicit ItemTree(const ItemList& items);
    ItemTree(const ItemTree&) = delete;
    ItemTree& operator=(const ItemTree&) = delete;

    [[nodiscard]] const ItemNode& Document() const { return m_Nodes.front(); }

  private:
    std::vector<ItemNode> m_Nodes;  ///< in the order of the list, behind the document
};

}  // namespace convlib
