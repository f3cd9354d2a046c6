#pragma once

#include "calls/MethodCall.h"
#include "calls/Module.h"

#include <string>

namespace unkindhost {

/// The module's file, loaded, and one provider of it, called as a host does. One thread at a time.
class LoadedProvider final {
  public:
    LoadedProvider();

    /// The document, or how the call failed: "status 00000000, return value 000000a1".
    [[nodiscard]] std::string GetInfo() const;
    [[nodiscard]] std::string GetPDInfo(const std::string& ctrl = "0", const std::string& encl = "252",
                                        const std::string& pd = "1") const;

    [[nodiscard]] CZORBALT_ServerService& Provider() const { return m_Module.Provider(); }

  private:
    [[nodiscard]] std::string Call(const calls::MethodRequest& request) const;

    calls::Module m_Module;
};

}  // namespace unkindhost
