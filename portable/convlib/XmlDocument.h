#pragma once

#include "itemconv/CItemDisp.h"

#include <string>
#include <string_view>

namespace convlib {

/// The items, made by this library, as an XML document whose document element is named `kind`, which is an
/// element name; docs/xml.md describes the vocabulary. A line of it:
///
///     <Item Name="Controller No." Value="0" Valid="TRUE"/>
///
/// The same text for the same items every time. Uses no stack that grows with the depth, and no line is
/// indented by more than a fixed width, so that the text grows linearly with the items. Throws what
/// allocation throws.
[[nodiscard]] std::string MakeDocument(std::string_view kind, const ItemList& items);

}  // namespace convlib
