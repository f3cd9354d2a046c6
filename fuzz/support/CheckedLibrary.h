#pragma once

#include "itemconv/CMSRAID_MngLib.h"

#include <cstddef>
#include <string>

namespace fuzzing {

/// The conversion library with a ledger in front of it: every item is made and deleted once, and every
/// document is checked against the items that it was made from while they stand. One for the process, one
/// thread.
class CheckedLibrary final {
  public:
    CheckedLibrary() = delete;

    /// A wrapper with these entry points, as after a successful load.
    [[nodiscard]] static CMSRAID_MngLib* Wrapper();

    /// Starts a case: nothing may be alive, nothing is refused.
    static void Begin();
    static void RefuseNothing();

    /// From the given creation on (1 is the next) no item is made.
    static void RefuseItemsFrom(std::size_t creation);
    static void RefuseInterface();
    [[nodiscard]] static bool HasRefusedAnItem();
    [[nodiscard]] static bool HasRefusedTheInterface();

    /// The items alive are those of the list, each once.
    static void RequireAliveExactly(const ItemList& items);
    static void RequireNothingAlive();

    /// The flag that an item was made with.
    [[nodiscard]] static bool IsValid(const CItemDisp& item);

    /// Converts the list, checks the document and returns it.
    [[nodiscard]] static std::string Convert(ItemList& items);

    /// The text of the last conversion.
    [[nodiscard]] static const std::string& LastDocument();
};

}  // namespace fuzzing
