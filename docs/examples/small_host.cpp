// Asks the RAID provider for the whole server and prints the XML document.
#include "qel/CFileUtility.h"
#include "qel/CZORBALT_ServerService.h"
#include "qel/portable/CTraceOutput.h"

#include <dlfcn.h>

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

namespace {

using Module = std::unique_ptr<void, decltype([](void* module) { dlclose(module); })>;
using Object = std::unique_ptr<IWbemClassObject, decltype([](auto* object) { object->Release(); })>;

// Keeps what the call delivers. Lives on the stack, so nobody need count its references.
struct Sink final : IWbemObjectSink {
    HRESULT Indicate(long /*count*/, IWbemClassObject** objects) override {
        objects[0]->AddRef();  // The provider releases its own when the call ends.
        output.reset(objects[0]);
        return WBEM_S_NO_ERROR;
    }
    HRESULT SetStatus(long, HRESULT, BSTR, IWbemClassObject*) override { return WBEM_S_NO_ERROR; }
    DWORD AddRef() noexcept override { return 2; }
    DWORD Release() noexcept override { return 1; }

    Object output;
};

// Hears the reason of a failure, which only the trace tells.
struct Reason final : ITraceListener {
    Reason() { CTraceOutput::SetListener(this); }
    ~Reason() override { CTraceOutput::SetListener(nullptr); }
    void OnTrace(const TraceLine& line) noexcept override {
        constexpr std::string_view kMessage = "MSGID_MNGSRV_RAID_0001_F ";
        if (line.text.starts_with(kMessage)) {
            line.text.copy(code, 2, kMessage.size());
        }
    }

    char code[3] = "--";
};

int Ask(CZORBALT_ServerService& provider) {
    Sink sink;
    Reason reason;
    char className[] = "ZORBALT_MngSrvRaid";
    char method[] = "GetInfo";
    const DWORD status = provider.ExecMethodAsync(className, method, 0, nullptr, nullptr, &sink);
    if (status != WBEM_S_NO_ERROR || sink.output == nullptr) {
        std::fprintf(stderr, "%s failed with status 0x%08x, reason %s\n", method, status, reason.code);
        return 2;
    }
    WbemValue value;
    sink.output->Get("ReturnValue", &value);
    if (const DWORD returnValue = std::get<DWORD>(value); returnValue != 0) {
        std::fprintf(stderr, "%s failed with 0x%08x, reason %s\n", method, returnValue, reason.code);
        return 1;
    }
    sink.output->Get("XmlData", &value);
    std::fputs(std::get<std::string>(value).c_str(), stdout);
    return 0;
}

}  // namespace

int main() {
    Module module;  // Closed last: the provider's code is in it, and perhaps that of an exception.
    try {
        const std::string cim = CFileUtility::GetInstallPath(INSTALLPATH_CIM);
        module.reset(dlopen((cim + "/libqelp_ZORBALT_MngSrvRaid.so").c_str(), RTLD_NOW | RTLD_LOCAL));
        using Create = CZORBALT_ServerService*();
        auto* const create = module ? reinterpret_cast<Create*>(dlsym(module.get(), "create")) : nullptr;
        if (create == nullptr) {
            throw std::runtime_error(dlerror());
        }
        const std::unique_ptr<CZORBALT_ServerService> provider(create());
        return Ask(*provider);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "small_host: %s\n", error.what());
        return 3;
    }
}
