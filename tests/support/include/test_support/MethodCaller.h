#pragma once

#include "qel/CZORBALT_ServerService.h"

#include <functional>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace testsupport {

/// A caller's sink: keeps what it is told, in order, and may throw.
class RecordingSink final : public IWbemObjectSink {
  public:
    HRESULT Indicate(long count, IWbemClassObject** objects) override;
    HRESULT SetStatus(long flags, HRESULT status, BSTR text, IWbemClassObject* object) override;
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }

    std::vector<std::string> m_Calls;  ///< "Indicate", "SetStatus 00000000"
    WbemValue m_ReturnValue;           ///< of the last instance indicated
    WbemValue m_XmlData;               ///< of the last instance indicated
    std::function<void()> m_OnIndicate = [] {};
};

/// Calls a method with the given string parameters as the framework does; returns the status. A method that
/// the class lacks is called without an input instance.
DWORD CallMethod(CZORBALT_ServerService& provider, const std::string& method,
                 const std::map<std::string, std::string>& parameters, RecordingSink& sink);

}  // namespace testsupport
