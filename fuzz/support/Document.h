#pragma once

#include "itemconv/CItemDisp.h"

#include <string_view>

namespace fuzzing {

/// The flag of an item.
using ItemFlag = bool(const CItemDisp& item);

/// Requires of a document what docs/xml.md says: a parser that is not ours (expat) accepts it, and it holds
/// exactly one element for every item, in its place, with its name, value and flag. The items are told from
/// the rules anew, without a look into the conversion library.
void RequireDocument(std::string_view xml, std::string_view kind, const ItemList& items, ItemFlag& isValid);

}  // namespace fuzzing
