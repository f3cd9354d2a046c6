#pragma once

#include "itemconv/CItemDisp.h"

#include <cstdint>

/// The conversion library's interface object: turns an item list into XML text.
///
/// Made by the library's `CreateLibIF`, destroyed by its `DeleteLibIF`, one thread at a time. `ConvertToXml`
/// must stay in the third slot of the table: behind the destructor, which takes two.
class QelLibIF {
  public:
    QelLibIF(const QelLibIF&) = delete;
    QelLibIF& operator=(const QelLibIF&) = delete;
    virtual ~QelLibIF() = default;

    /// Converts `items` as their fields stand now. `option` is 0, `kind` the kind of document ("RAID").
    /// Returns 0 and stores a NUL-terminated text in `*xml`, which belongs to this object and lives until the
    /// next conversion or until the object is destroyed; any other result is a failure code and leaves `*xml`
    /// alone. Throws standard exceptions at most: a type of its own would be gone with the library before
    /// anybody handles it.
    virtual std::uint32_t ConvertToXml(int option, const char* kind, ItemList* items, const char** xml) = 0;

  protected:
    QelLibIF() = default;
};

/// The library's entry points, by the names under which it exports them with C linkage. None of them throws:
/// an exception's own type would be gone with the library.
extern "C" {
using CreateLibIFFunction = QelLibIF*();          ///< null on failure
using DeleteLibIFFunction = void(QelLibIF*);      ///< null is passed over
using DeleteItemDispFunction = void(CItemDisp*);  ///< null is passed over
/// Copies its four NUL-terminated texts: parent name, name, value, and the valid flag "TRUE" (read from a
/// report) or "FALSE" (a placeholder for a key that the report lacks). Null on failure.
using CreateItemDispFunction = CItemDisp*(const char* parentName, const char* name, const char* value,
                                          const char* validFlag);
}
