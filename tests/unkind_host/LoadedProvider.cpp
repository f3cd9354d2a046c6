#include "tests/unkind_host/LoadedProvider.h"

#include <array>
#include <cstdio>

namespace unkindhost {
namespace {

std::string Hex(DWORD number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08x", static_cast<unsigned>(number));
    return text.data();
}

std::string Describe(const host::MethodOutcome& outcome) {
    if (outcome.document) {
        return *outcome.document;
    }
    std::string text = "status " + Hex(outcome.status);
    if (outcome.returnValue) {
        text += ", return value " + Hex(*outcome.returnValue);
    }
    return outcome.exception.empty() ? text : text + ", exception " + outcome.exception;
}

}  // namespace

LoadedProvider::LoadedProvider()
    : m_Module(host::Module::Load(std::string(UNKIND_HOST_CIM) + "/libqelp_ZORBALT_MngSrvRaid.so")) {}

std::string LoadedProvider::GetInfo() const {
    return Call({"GetInfo", {}, {}});
}

std::string LoadedProvider::GetPDInfo(const std::string& ctrl, const std::string& encl,
                                      const std::string& pd) const {
    return Call({"GetPDInfo", {{"CTRL", "CtrlNo", ctrl}, {"ENCL", "EnclNo", encl}, {"PD", "PDNo", pd}}, {}});
}

std::string LoadedProvider::Call(const host::MethodRequest& request) const {
    return Describe(host::CallMethod(Provider(), request));
}

}  // namespace unkindhost
