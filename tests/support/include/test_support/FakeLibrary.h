#pragma once

#include "itemconv/CMSRAID_MngLib.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace testsupport {

/// A conversion library inside the test: counts items, and may be told to fail. One at a time. Deleting an
/// item twice, or one that is not its own, is a test failure; so is an item that is left when it goes.
class FakeLibrary final {
  public:
    FakeLibrary();
    ~FakeLibrary();
    FakeLibrary(const FakeLibrary&) = delete;
    FakeLibrary& operator=(const FakeLibrary&) = delete;

    /// A wrapper whose entry points are this library's, as after a successful load.
    [[nodiscard]] CMSRAID_MngLib* Wrapper() { return &m_Wrapper; }

    /// From the given creation on (1 is the next), `CreateItemDisp` makes nothing.
    void FailCreationsFrom(std::size_t creation);

    /// Called before every creation; may throw.
    void OnCreate(std::function<void()> hook);

    /// `ConvertToXml` returns this status; with 0 and `hasText` false, success without a text.
    void SetConversion(std::uint32_t status, bool hasText);

    /// `CreateLibIF` returns null.
    void RefuseInterface();

    [[nodiscard]] static std::size_t ItemsAlive();
    [[nodiscard]] static std::size_t ItemsDeleted();
    [[nodiscard]] static std::size_t InterfacesAlive();

    /// "parent|name|value|flag" of every item, in order.
    [[nodiscard]] static std::vector<std::string> Describe(const ItemList& items);

    /// What the last conversion was given.
    [[nodiscard]] static const std::vector<std::string>& LastConversion();

    /// Deletes the items and empties the list, as their owner does in the end.
    void Delete(ItemList& items);

  private:
    CMSRAID_MngLib m_Wrapper;
};

}  // namespace testsupport
