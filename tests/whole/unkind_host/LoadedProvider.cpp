#include "LoadedProvider.h"

#include <array>
#include <cstdio>

namespace unkindhost {
namespace {

std::string Hex(DWORD number) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08x", static_cast<unsigned>(number));
    return text.data();
}

std::string Describe(const calls::MethodOutcome& outcome) {
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
    : m_Module(calls::Module::Load(std::string(UNKIND_HOST_CIM) + "/libqelp_ZORBALT_MngSrvRaid.so")) {}

std::string LoadedProvider::GetInfo() const {
    return Call({});
}

std::string LoadedProvider::GetPDInfo(const std::string& ctrl, const std::string& encl,
                                      const std::string& pd) const {
    return Call({.drive = calls::DrivePlace{ctrl, encl, pd}});
}

std::string LoadedProvider::Call(const calls::MethodRequest& request) const {
    return Describe(calls::CallMethod(Provider(), request));
}

}  // namespace unkindhost
