#pragma once

#include "itemconv/CItemDisp.h"
#include "itemconv/CMSRAID_MngLib.h"

#include <string>

/// Making and deleting display items, so that whatever fails nothing is lost and nothing is deleted twice.
namespace msraid {

enum class Validity {
    FromReport,   ///< "TRUE": a root, a title, or a key that the report holds
    Placeholder,  ///< "FALSE": a key that the report lacks
};

/// A list of one new item, to be spliced to its place; an empty list when the library makes none. The cell is
/// made before the item, since an item without a cell would be lost when memory ends.
[[nodiscard]] ItemList MakeItem(const CMSRAID_MngLib* library, const std::string& parentName,
                                const std::string& name, const std::string& value, Validity validity);

/// Deletes one item through the library; null, and a library that deletes none, are passed over.
void DeleteItem(const CMSRAID_MngLib* library, CItemDisp* item);

/// Deletes the items front to back. The cells stay and become null, so that no item can be deleted again.
void DeleteItems(const CMSRAID_MngLib* library, ItemList& items);

}  // namespace msraid
