#include "convlib/EntryPoints.h"

#include "DisplayItem.h"
#include "XmlConverter.h"

#include <new>
#include <optional>
#include <string_view>

#define CONVLIB_EXPORT __attribute__((visibility("default")))

namespace {

std::optional<bool> ParseValidFlag(std::string_view flag) {
    if (flag == convlib::kValidText) {
        return true;
    }
    if (flag == convlib::kInvalidText) {
        return false;
    }
    return std::nullopt;
}

}  // namespace

CONVLIB_EXPORT QelLibIF* CreateLibIF() {
    return new (std::nothrow) convlib::XmlConverter;
}

CONVLIB_EXPORT void DeleteLibIF(QelLibIF* libIF) {
    delete libIF;
}

CONVLIB_EXPORT CItemDisp* CreateItemDisp(const char* parentName, const char* name, const char* value,
                                         const char* validFlag) {
    if (parentName == nullptr || name == nullptr || value == nullptr || validFlag == nullptr) {
        return nullptr;
    }
    const std::optional<bool> valid = ParseValidFlag(validFlag);
    if (!valid) {
        return nullptr;
    }
    try {
        return new convlib::DisplayItem(parentName, name, value, *valid);
    } catch (...) {
        return nullptr;
    }
}

// The base has no virtual destructor, so that nothing stands in front of its texts: the item goes as what it
// is.
CONVLIB_EXPORT void DeleteItemDisp(CItemDisp* item) {
    delete static_cast<convlib::DisplayItem*>(item);
}
