#include "itemconv/DisplayItems.h"

#include <utility>

namespace msraid {

bool InsertItem(const CMSRAID_MngLib* library, ItemList& list, ItemList::const_iterator place,
                const std::string& parentName, const std::string& name, const std::string& value,
                Validity validity) {
    if (library == nullptr || library->CreateItemDisp == nullptr) {
        return false;
    }
    const char* const flag = validity == Validity::FromReport ? "TRUE" : "FALSE";
    const auto cell = list.insert(place, nullptr);
    *cell = library->CreateItemDisp(parentName.c_str(), name.c_str(), value.c_str(), flag);
    if (*cell == nullptr) {
        list.erase(cell);
        return false;
    }
    return true;
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
