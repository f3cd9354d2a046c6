#pragma once

#include "ItemTree.h"
#include "TextSink.h"

#include <string_view>

namespace convlib {

/// Writes the tree as an XML document whose document element is named `kind`, which is an element name;
/// docs/xml.md describes the vocabulary. A line of it:
///
///     <Item Name="Controller No." Value="0" Valid="TRUE"/>
///
/// Writes the same text for the same tree every time. Uses no stack that grows with the depth, and no line is
/// indented by more than a fixed width, so that the text grows linearly with the items.
void WriteDocument(TextSink& sink, std::string_view kind, const ItemTree& tree);

}  // namespace convlib
