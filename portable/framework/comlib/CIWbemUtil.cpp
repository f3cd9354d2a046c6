#include "qel/CIWbemUtil.h"

#include <utility>

HRESULT CIWbemUtil::getStringFromIWbemClassObject(IWbemClassObject* object, const char* name,
                                                  std::string* value) {
    if (object == nullptr || name == nullptr || value == nullptr) {
        return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
    }
    WbemValue found;
    const HRESULT result = object->Get(name, &found);
    if (result < 0) {
        return result;
    }
    if (std::holds_alternative<std::monostate>(found)) {
        return static_cast<HRESULT>(WBEM_E_NOT_FOUND);
    }
    if (!std::holds_alternative<std::string>(found)) {
        return static_cast<HRESULT>(WBEM_E_TYPE_MISMATCH);
    }
    *value = std::get<std::string>(std::move(found));
    return result;
}

HRESULT CIWbemUtil::setStringToIWbemClassObject(IWbemClassObject* object, const char* name,
                                                std::string value) {
    if (object == nullptr || name == nullptr) {
        return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
    }
    return object->Put(name, WbemValue(std::move(value)));
}

HRESULT CIWbemUtil::setReturnValueToIWbemClassObject(IWbemClassObject* object, DWORD returnValue) {
    if (object == nullptr) {
        return static_cast<HRESULT>(WBEM_E_INVALID_PARAMETER);
    }
    return object->Put("ReturnValue", WbemValue(std::in_place_type<std::uint32_t>, returnValue));
}
