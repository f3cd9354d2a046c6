#pragma once

#include "inventory/Document.h"

#include <string>

namespace inventory {

/// What an item is called among others, without the marks of a title. Of several lists of one name, each is
/// known by the drive that it is about, of a table's rows by the attribute: "General Information",
/// "PD List PD4", "SMART Detail(SATA) 9 Power-On Hours".
[[nodiscard]] std::string LabelOf(const Item& item);

}  // namespace inventory
