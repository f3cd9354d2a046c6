// A provider module that behaves as the environment variable FAKE_MODULE says, for what the real one cannot
// be made to do from outside.

#include "qel/CFileUtility.h"
#include "qel/CIWbemUtil.h"
#include "qel/CTraceUtility.h"
#include "qel/CZORBALT_SysService.h"
#include "qel/portable/CWbemRepository.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace {

constexpr std::size_t kLargeSize = 4'000'000;

/// Its code goes with the module, as that of whatever a module throws may.
struct ModuleError final : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Of a process that has a file in memory for what it answers: leaves there what nobody would pack, and ends
/// as if all were well.
[[noreturn]] void SpoilAnswer(const std::string& bytes) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry, gone).string().starts_with("/memfd:document")) {
            (void)!::write(std::stoi(entry.path().filename()), bytes.data(), bytes.size());
        }
    }
    ::_exit(0);
}

class FakeProvider final : public CZORBALT_SysService {
  public:
    FakeProvider() : CZORBALT_SysService("fake", "test", "1") {}

    DWORD ExecMethodAsync(char* /*className*/, char* methodName, long /*flags*/, IWbemContext* /*context*/,
                          IWbemClassObject* inParams, IWbemObjectSink* sink) override {
        const std::string_view mode = std::getenv("FAKE_MODULE");
        if (mode == "throw") {
            throw ModuleError("out of\ncheese");
        }
        if (mode == "throw-root") {
            throw ModuleError("no key in " + CFileUtility::GetInstallPath(INSTALLPATH_ROOT) + "/etc");
        }
        if (mode.starts_with("spoil:")) {
            SpoilAnswer(std::string(mode.substr(mode.find(':') + 1)));
        }
        if (mode == "status") {
            sink->SetStatus(0, static_cast<HRESULT>(WBEM_E_NOT_SUPPORTED), nullptr, nullptr);
            return WBEM_E_NOT_SUPPORTED;
        }
        if (mode == "silent") {
            sink->SetStatus(0, WBEM_S_NO_ERROR, nullptr, nullptr);
            return WBEM_S_NO_ERROR;
        }
        IWbemClassObject* definition = nullptr;
        IWbemClassObject* signature = nullptr;
        IWbemClassObject* output = nullptr;
        CWbemRepository::Process().GetObject("ZORBALT_MngSrvRaid", 0, nullptr, &definition, nullptr);
        definition->GetMethod(methodName, 0, nullptr, &signature);
        signature->SpawnInstance(0, &output);
        Fill(mode, inParams, output);
        sink->Indicate(1, &output);
        sink->SetStatus(0, WBEM_S_NO_ERROR, nullptr, nullptr);
        for (IWbemClassObject* const object : {output, signature, definition}) {
            object->Release();
        }
        return WBEM_S_NO_ERROR;
    }

  private:
    static void Fill(std::string_view mode, IWbemClassObject* inParams, IWbemClassObject* output) {
        std::string document = "<RAID/>\n";
        DWORD returnValue = 0;
        if (mode == "large") {
            document.assign(kLargeSize, 'x');
        } else if (mode == "parameters") {
            document.clear();
            for (const char* const name : {"CtrlNo", "EnclNo", "PDNo", APP_KEY_PROPERTY}) {
                std::string text;
                CIWbemUtil::getStringFromIWbemClassObject(inParams, name, &text);
                document += "[" + text + "]";
            }
        } else if (mode == "reasons") {
            CTraceUtility::WriteTrace("msraid", "MSGID_MNGSRV_RAID_0001_F", "0406");
            returnValue = 0x80000001;
        } else if (mode == "wordless") {
            returnValue = 0x80000001;
        }
        CIWbemUtil::setStringToIWbemClassObject(output, "XmlData", document);
        CIWbemUtil::setReturnValueToIWbemClassObject(output, returnValue);
    }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) CZORBALT_ServerService* create() {
    if (std::string_view(std::getenv("FAKE_MODULE")) == "no-provider") {
        return nullptr;
    }
    return new FakeProvider;
}
