#pragma once

#include "qel/IWbemClassObject.h"
#include "qel/QelExport.h"

#include <string>

/// Reads and writes single properties of WBEM objects.
///
/// A null object or place gives WBEM_E_INVALID_PARAMETER. Other failures are those of the object's `Get` and
/// `Put`; a negative result is a failure. May throw std::bad_alloc.
class QEL_API CIWbemUtil {
  public:
    CIWbemUtil() = delete;

    /// WBEM_E_NOT_FOUND: no such property or not set; WBEM_E_TYPE_MISMATCH: not a string. `*value` is left
    /// alone on failure.
    static HRESULT getStringFromIWbemClassObject(IWbemClassObject* object, const char* name,
                                                 std::string* value);

    static HRESULT setStringToIWbemClassObject(IWbemClassObject* object, const char* name, std::string value);

    /// Sets "ReturnValue" of a method's output instance.
    static HRESULT setReturnValueToIWbemClassObject(IWbemClassObject* object, DWORD returnValue);
};
