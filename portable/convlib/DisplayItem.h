#pragma once

#include "itemconv/CItemDisp.h"

#include <string_view>

namespace convlib {

inline constexpr std::string_view kValidText = "TRUE";
inline constexpr std::string_view kInvalidText = "FALSE";

/// What every `CItemDisp` really is: the three texts and, behind them, the valid flag ("TRUE" read from a
/// report, "FALSE" a placeholder). Made by `CreateItemDisp` and destroyed by `DeleteItemDisp` only.
class DisplayItem final : public CItemDisp {
  public:
    DisplayItem(const char* parentName, const char* name, const char* value, bool valid)
        : CItemDisp(parentName, name, value), m_Valid(valid) {}

    [[nodiscard]] std::string_view ValidText() const { return m_Valid ? kValidText : kInvalidText; }

  private:
    bool m_Valid;
};

}  // namespace convlib
