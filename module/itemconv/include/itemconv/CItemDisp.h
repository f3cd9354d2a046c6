#pragma once

#include <list>
#include <string>

/// A display item: one line of the tree that a report is turned into, such as the key line "Product Name : X"
/// below the title "### General Information ###".
///
/// The object belongs to the conversion library: only its `CreateItemDisp` makes one and only its
/// `DeleteItemDisp` deletes it, before the library is closed. The three texts stand first in the object, in
/// this order and with nothing in front of them; what follows them is the library's own and of unknown size,
/// so an item is only ever handled through a pointer. Readers may rewrite the parent name and the name after
/// creation.
class CItemDisp {
  public:
    CItemDisp(const CItemDisp&) = delete;
    CItemDisp& operator=(const CItemDisp&) = delete;

    std::string m_ParentName;  ///< name of the item that this one stands under; "" for a root
    std::string m_Name;        ///< the key, or the whole title line
    std::string m_Value;       ///< "" for roots, titles and placeholders

  protected:
    CItemDisp(const char* parentName, const char* name, const char* value)
        : m_ParentName(parentName), m_Name(name), m_Value(value) {}
    ~CItemDisp() = default;
};

/// An ordered list of items. It owns its cells, never the items; the tree is carried by the parent names
/// alone.
using ItemList = std::list<CItemDisp*>;
