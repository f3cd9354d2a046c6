#pragma once

#include "itemconv/CItemDisp.h"

#include <string>

/// A position in an item list that may be null, which a list's own iterator cannot be. Valid only while its
/// cell stands; whoever releases the cell sets it to null.
class ItemPosition final {
  public:
    ItemPosition() = default;
    explicit ItemPosition(ItemList::iterator at) : m_At(at), m_IsSet(true) {}

    [[nodiscard]] bool IsNull() const { return !m_IsSet; }
    [[nodiscard]] bool PointsAt(ItemList::const_iterator cell) const { return m_IsSet && m_At == cell; }

    /// Name of the item there, for use as a parent name; "" when null. Goes with the item.
    [[nodiscard]] const std::string& Name() const { return m_IsSet ? (*m_At)->m_Name : kNoName; }

  private:
    static inline const std::string kNoName;

    ItemList::iterator m_At;
    bool m_IsSet = false;
};
