#pragma once

#include "qel/QelTypes.h"

/// Reference counting, common to all WBEM objects.
///
/// Whoever receives an object through an out parameter owns one reference and calls `Release` once. `AddRef`
/// and `Release` may be called from any thread and never throw; the last `Release` deletes the object.
class IQelUnknown {
  public:
    IQelUnknown(const IQelUnknown&) = delete;
    IQelUnknown& operator=(const IQelUnknown&) = delete;

    virtual DWORD AddRef() noexcept = 0;   ///< returns the new count
    virtual DWORD Release() noexcept = 0;  ///< returns the new count; 0: the object is gone

  protected:
    IQelUnknown() = default;
    virtual ~IQelUnknown() = default;
};
