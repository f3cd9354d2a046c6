#pragma once

#include "qel/IWbemClassObject.h"
#include "qel/IWbemObjectSink.h"

#include <functional>
#include <string>
#include <variant>

namespace unkindhost {

/// Keeps what it is told last. Belongs to its caller; may do anything while it is told.
class KeepingSink final : public IWbemObjectSink {
  public:
    HRESULT Indicate(long count, IWbemClassObject** objects) override {
        WbemValue value;
        if (count > 0 && objects[0]->Get("XmlData", &value) >= 0) {
            const std::string* const text = std::get_if<std::string>(&value);
            m_Document = text == nullptr ? "" : *text;
        }
        if (count > 0 && objects[0]->Get("ReturnValue", &value) >= 0) {
            const auto* const number = std::get_if<std::uint32_t>(&value);
            m_ReturnValue = number == nullptr ? 0 : *number;
        }
        m_OnIndicate();
        return 0;
    }
    HRESULT SetStatus(long /*flags*/, HRESULT status, BSTR /*text*/, IWbemClassObject* /*object*/) override {
        m_Status = static_cast<DWORD>(status);
        m_OnStatus();
        return 0;
    }
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }

    std::string m_Document;
    std::uint32_t m_ReturnValue = 0;
    DWORD m_Status = WBEM_E_FAILED;
    std::function<void()> m_OnIndicate = [] {};
    std::function<void()> m_OnStatus = [] {};
};

}  // namespace unkindhost
