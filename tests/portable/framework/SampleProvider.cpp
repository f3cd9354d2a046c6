// A small provider: of the class SAMPLE_Echo it knows the methods "Echo", which gives its input back, and
// "Fail", which lets an exception of the framework's out.
#include "qel/CIWbemUtil.h"
#include "qel/CTraceUtility.h"
#include "qel/CZORBALT_SysService.h"
#include "qel/QelException.h"
#include "qel/QelWindows.h"

#include <memory>
#include <string>

namespace {

struct Releaser {
    void operator()(IQelUnknown* object) const { object->Release(); }
};
using Object = std::unique_ptr<IWbemClassObject, Releaser>;

class SampleProvider final : public CZORBALT_SysService {
  public:
    SampleProvider() : CZORBALT_SysService("sample", "maker", "1.0") {
        QelException::set_transrator();
        writeDLLFileVersionLog("libSampleProvider.so");
    }
    ~SampleProvider() override { CTraceUtility::WriteDebug("sample", 4, "SampleProvider is gone"); }

    DWORD ExecMethodAsync(char* className, char* methodName, long flags, IWbemContext* context,
                          IWbemClassObject* inParams, IWbemObjectSink* sink) override {
        if (lstrcmpW("Fail", methodName) == 0) {
            throw QelException("asked to fail");
        }
        const DWORD status = lstrcmpW("Echo", methodName) == 0
                                 ? Echo(context, inParams, *sink)
                                 : CZORBALT_ServerService::ExecMethodAsync(className, methodName, flags,
                                                                           context, inParams, sink);
        sink->SetStatus(0, static_cast<HRESULT>(status), nullptr, nullptr);
        return status;
    }

  private:
    [[nodiscard]] Object MakeOutput(IWbemContext* context) const {
        IWbemClassObject* definition = nullptr;
        IWbemClassObject* signature = nullptr;
        IWbemClassObject* instance = nullptr;
        if (GetObjectManager() == nullptr ||
            GetObjectManager()->GetObject("SAMPLE_Echo", 0, context, &definition, nullptr) < 0) {
            return nullptr;
        }
        const Object ownedDefinition(definition);
        if (definition->GetMethod("Echo", 0, nullptr, &signature) < 0) {
            return nullptr;
        }
        const Object ownedSignature(signature);
        return Object(signature->SpawnInstance(0, &instance) < 0 ? nullptr : instance);
    }

    [[nodiscard]] DWORD Echo(IWbemContext* context, IWbemClassObject* inParams, IWbemObjectSink& sink) const {
        const Object output = MakeOutput(context);
        if (output == nullptr) {
            return WBEM_E_NOT_SUPPORTED;
        }
        std::string text;
        const bool isRead = CIWbemUtil::getStringFromIWbemClassObject(inParams, "Text", &text) >= 0;
        CIWbemUtil::setStringToIWbemClassObject(output.get(), "Text", text);
        CIWbemUtil::setReturnValueToIWbemClassObject(output.get(), isRead ? 0 : 0x80000001);
        IWbemClassObject* objects[] = {output.get()};
        sink.Indicate(1, objects);
        return WBEM_S_NO_ERROR;
    }
};

}  // namespace

extern "C" QEL_API CZORBALT_ServerService* create() {
    return new SampleProvider;
}
