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

/// Puts a new item in front of `place` in `list`. False, and the list is as it was, when the library makes
/// none. The cell is made before the item, since an item without a cell would be lost when memory ends.
[[nodiscard]] bool InsertItem(const CMSRAID_MngLib* library, ItemList& list, ItemList::const_iterator place,
                              const std::string& parentName, const std::string& name,
                              const std::string& value, Validity validity);

/// Deletes one item through the library; null, and a library that deletes none, are passed over.
void DeleteItem(const CMSRAID_MngLib* library, CItemDisp* item);

/// Deletes the items front to back. The cells stay and become null, so that no item can be deleted again.
void DeleteItems(const CMSRAID_MngLib* library, ItemList& items);

}  // namespace msraid
