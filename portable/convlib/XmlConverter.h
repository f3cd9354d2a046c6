#pragma once

#include "itemconv/QelLibIF.h"

#include <cstdint>
#include <string>

namespace convlib {

/// The interface object behind `QelLibIF`. It owns the text that it last made. One thread at a time; the
/// items that it is given all come from this library's `CreateItemDisp` and are only read.
class XmlConverter final : public QelLibIF {
  public:
    static constexpr std::uint32_t kSuccess = 0;
    /// A null argument, an option other than 0, or a kind that cannot name an element.
    static constexpr std::uint32_t kBadArgument = 0x80000001;
    /// Memory is short.
    static constexpr std::uint32_t kOutOfResources = 0x80000002;

    [[nodiscard]] std::uint32_t ConvertToXml(int option, const char* kind, ItemList* items,
                                             const char** xml) override;

  private:
    std::string m_Text;
};

}  // namespace convlib
