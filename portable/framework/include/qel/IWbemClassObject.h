#pragma once

#include "qel/IQelUnknown.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// What a property can hold. The first alternative is "not set".
using WbemValue = std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::string>;

/// A WBEM class, the signature of one of its methods, or an instance of either.
///
/// The properties are typed by their declaration: "XmlData" of a method's output takes a string and nothing
/// else. Every instance has in addition the system property "__AppKey" (string), which carries the caller's
/// application key. One thread at a time per object; reference counts may be changed from any thread.
/// Operations that return an HRESULT do not throw, except std::bad_alloc where a value is copied.
class IWbemClassObject : public IQelUnknown {
  public:
    /// Copies the property's value into `*value`. WBEM_E_NOT_FOUND: no such property.
    virtual HRESULT Get(const char* name, WbemValue* value) const = 0;

    /// Sets a property. WBEM_E_NOT_FOUND: no such property; WBEM_E_TYPE_MISMATCH: declared with another type.
    /// "Not set" suits every type.
    virtual HRESULT Put(const char* name, const WbemValue& value) = 0;

    /// Names of the declared properties, in declaration order.
    virtual HRESULT GetNames(std::vector<std::string>* names) const = 0;

    /// The signatures of a method of a class: its parameters as properties, and in the output signature
    /// "ReturnValue" (unsigned 32 bits) besides. A place that is null is not wanted. On failure
    /// (WBEM_E_INVALID_METHOD: the class has no such method) the places are left alone.
    virtual HRESULT GetMethod(const char* name, long flags, IWbemClassObject** inSignature,
                              IWbemClassObject** outSignature) = 0;

    /// A new instance of this class or signature, no property set.
    virtual HRESULT SpawnInstance(long flags, IWbemClassObject** instance) = 0;
};
