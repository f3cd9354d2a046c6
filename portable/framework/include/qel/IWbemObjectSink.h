#pragma once

#include "qel/IWbemClassObject.h"

/// Receives the results of one asynchronous call.
///
/// `Indicate` any number of times, then `SetStatus` once, all on the provider's thread. The objects passed
/// belong to the provider: a sink that keeps one beyond the call adds a reference.
class IWbemObjectSink : public IQelUnknown {
  public:
    virtual HRESULT Indicate(long count, IWbemClassObject** objects) = 0;

    /// Ends the call. `flags` is 0; `text` and `object` may be null.
    virtual HRESULT SetStatus(long flags, HRESULT status, BSTR text, IWbemClassObject* object) = 0;
};
