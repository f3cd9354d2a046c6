#include "XmlConverter.h"

#include "ItemTree.h"
#include "TextSink.h"
#include "XmlDocument.h"
#include "XmlText.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace convlib {
namespace {

/// Measures before it writes, so that the text takes its own size and no more.
std::unique_ptr<char[]> MakeDocument(std::string_view kind, const ItemList& items) {
    const ItemTree tree(items);
    TextSink measure;
    WriteDocument(measure, kind, tree);

    const std::size_t size = measure.Size();
    auto text = std::make_unique_for_overwrite<char[]>(size + 1);
    TextSink sink(std::span(text.get(), size));
    WriteDocument(sink, kind, tree);
    text[size] = '\0';
    return text;
}

}  // namespace

std::uint32_t XmlConverter::ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) {
    if (option != 0 || kind == nullptr || items == nullptr || xml == nullptr || !IsElementName(kind)) {
        return kBadArgument;
    }
    try {
        m_Text = MakeDocument(kind, *items);
    } catch (...) {
        return kOutOfResources;
    }
    *xml = m_Text.get();
    return kSuccess;
}

}  // namespace convlib
