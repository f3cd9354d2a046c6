#pragma once

#include "MadeUpReports.h"
#include "itemconv/CItemDisp.h"
#include "itemconv/CMSRAID_MngLib.h"

#include <iosfwd>
#include <string>

namespace bench {

/// The conversion library, linked in.
[[nodiscard]] CMSRAID_MngLib& Library();

/// What a reader makes of a report, from opening the file to handing the items over, without the tool's run.
/// Throws std::runtime_error when it refuses the report. The caller deletes the items.
[[nodiscard]] ItemList Read(Kind kind, const std::string& path);

void Delete(ItemList& items);

/// One line for each item: parent name, name, value and valid flag, with tabs between them.
void WriteItems(std::ostream& out, const ItemList& items);

/// Makes items of such lines.
[[nodiscard]] ItemList ReadItems(const std::string& path);

/// The bare loop over a report's lines that readers are measured by; its result is the bytes that it saw.
[[nodiscard]] std::size_t ReadLines(const std::string& path);

/// As `ReadLines`, and `count` display items are made by the conversion library and put into a list, like
/// those of `patterns` one after the other: what no reader with this library and this list can be faster
/// than.
[[nodiscard]] ItemList ReadLinesAndMakeItems(const std::string& path, const ItemList& patterns,
                                             std::size_t count);

}  // namespace bench
