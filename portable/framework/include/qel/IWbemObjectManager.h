#pragma once

#include "qel/IWbemClassObject.h"
#include "qel/IWbemContext.h"

#include <string>

/// Gives out class definitions by name. Safe to use from any thread.
class IWbemObjectManager : public IQelUnknown {
  public:
    /// Stores the class named `path` in `*object`; the caller releases it. On failure (WBEM_E_NOT_FOUND)
    /// `*object` is left alone. `callResult` is for semi-synchronous calls and may be null.
    virtual HRESULT GetObject(const std::string& path, long flags, IWbemContext* context,
                              IWbemClassObject** object, void** callResult) = 0;
};
