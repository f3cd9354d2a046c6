#pragma once

#include "itemconv/CItemDisp.h"

#include <cstdint>

namespace bench {

/// How the items of a list stand to one another.
enum class Shape {
    Report,     ///< as the report of physical drives gives them
    OneParent,  ///< all under the first one
    Chain,      ///< each under the one before it
    OneName,    ///< all of the same name, which is their parent's too
    NoParent,   ///< none of the parents is there
};

/// So many drives' items, 16 for a drive except for `Report`, which has as many as the report. Deleted by
/// `bench::Delete`.
[[nodiscard]] ItemList ItemsOf(Shape shape, std::uint32_t drives);

}  // namespace bench
