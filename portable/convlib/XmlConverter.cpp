#include "XmlConverter.h"

#include "XmlDocument.h"
#include "XmlText.h"

namespace convlib {

std::uint32_t XmlConverter::ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) {
    if (option != 0 || kind == nullptr || items == nullptr || xml == nullptr || !IsElementName(kind)) {
        return kBadArgument;
    }
    try {
        m_Text = MakeDocument(kind, *items);
    } catch (...) {
        return kOutOfResources;
    }
    *xml = m_Text.c_str();
    return kSuccess;
}

}  // namespace convlib
