#include "itemconv/DisplayItems.h"

#include <utility>

namespace msraid {

ItemList MakeItem(const CMSRAID_MngLib* library, const std::string& parentName, const std::string& name,
                  const std::string& value, Validity validity) {
    ItemList cell(1, nullptr);
    if (library != nullptr && library->CreateItemDisp != nullptr) {
        const char* const flag = validity == Validity::FromReport ? "TRUE" : "FALSE";
        cell.front() = library->CreateItemDisp(parentName.c_str(), name.c_str(), value.c_str(), flag);
    }
    if (cell.front() == nullptr) {
        cell.clear();
    }
    return cell;
}

void DeleteItem(const CMSRAID_MngLib* library, CItemDisp* item) {
    if (item != nullptr && library != nullptr && library->DeleteItemDisp != nullptr) {
        library->DeleteItemDisp(item);
    }
}

void DeleteItems(const CMSRAID_MngLib* library, ItemList& items) {
    for (CItemDisp*& item : items) {
        DeleteItem(library, std::exchange(item, nullptr));
    }
}

}  // namespace msraid
