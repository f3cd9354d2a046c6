#pragma once

#include "DisplayItem.h"
#include "NameTable.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace convlib {

/// The tree that an item list describes through its parent names. An item stands under the nearest item
/// before it that bears its parent's name, or under the document when its parent name is "" or borne by no
/// item before it; children keep the order of the list. Null entries are passed over.
///
/// Built in time linear in the items, unless their names collide as hashes. The tree looks at the items,
/// which must stay as they are while it is used. The constructor throws what allocation throws, and
/// `std::length_error` for a list longer than `maxItems`.
class ItemTree final {
  public:
    using Index = std::uint32_t;

    /// The document, under which every other node stands.
    static constexpr Index kDocument = 0;
    /// No such node: the document is nobody's child and nobody's sibling.
    static constexpr Index kNone = 0;
    /// As many as a `NameTable` holds, were each the parent of another.
    static constexpr std::size_t kMaxItems = std::numeric_limits<Index>::max() / 2;

    explicit ItemTree(const ItemList& items, std::size_t maxItems = kMaxItems);

    [[nodiscard]] Index FirstChild(Index node) const { return m_Nodes[node].firstChild; }
    [[nodiscard]] Index NextSibling(Index node) const { return m_Nodes[node].link; }
    /// Not to be asked of the document.
    [[nodiscard]] const DisplayItem& Item(Index node) const { return *m_Nodes[node].item; }

  private:
    struct Node {
        const DisplayItem* item;
        Index firstChild;  ///< the hash of its own name, then the first child
        Index link;        ///< the hash of the parent's name, its number, the parent, then the next sibling
    };

    void TakeItems(const ItemList& items);
    NameTable NumberParentNames();
    void FindParents(const NameTable& parentNames);
    void LinkChildren();

    std::vector<Node> m_Nodes;
};

}  // namespace convlib
