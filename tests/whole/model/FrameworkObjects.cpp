#include "FrameworkObjects.h"

#include "FrameworkHooks.h"

#include "qel/portable/CWbemRepository.h"

#include <dlfcn.h>

#include <stdexcept>

namespace replay {
namespace {

constexpr const char* kClassName = "ZORBALT_MngSrvRaid";

CWbemRepository& MakeRepository(const std::vector<WbemProperty>& outputs) {
    CWbemRepository& repository = *CWbemRepository::Create();
    repository.DeclareClass({kClassName, {}, {{"GetInfo", {}, outputs}, {"GetPDInfo", {}, outputs}}});
    return repository;
}

}  // namespace

void TraceRecorder::OnTrace(const TraceLine& line) noexcept {
    if (line.category == "msraid") {
        m_Lines.emplace_back(line.level, line.text);
    }
}

HRESULT RecordingSink::Indicate(long count, IWbemClassObject** objects) {
    ++m_Indicates;
    if (count != 1 || objects == nullptr || *objects == nullptr) {
        m_Faults.emplace_back("something other than one object was indicated");
    } else if (!m_Statuses.empty()) {
        m_Faults.emplace_back("an object was indicated after the end");
    } else {
        (*objects)->AddRef();
        m_Output.reset(*objects);
    }
    return WBEM_S_NO_ERROR;
}

HRESULT RecordingSink::SetStatus(long flags, HRESULT status, BSTR text, IWbemClassObject* object) {
    if (flags != 0 || text != nullptr || object != nullptr) {
        m_Faults.emplace_back("the status came with flags, a text or an object");
    }
    m_Statuses.push_back(static_cast<std::uint32_t>(status));
    return WBEM_S_NO_ERROR;
}

LoadedModule::LoadedModule(const std::filesystem::path& file) {
    void* const handle = ::dlopen(file.c_str(), RTLD_NOW);
    if (handle == nullptr) {
        throw std::runtime_error(::dlerror());
    }
    auto* const create = reinterpret_cast<CZORBALT_ServerService* (*)()>(::dlsym(handle, "create"));
    if (create == nullptr) {
        throw std::runtime_error(file.string() + " exports no create");
    }
    m_Provider = create();
    Hooks().m_IsVersionLogBroken = true;
    m_ProviderWithoutWrapper = create();
    Hooks().m_IsVersionLogBroken = false;
}

ClassObject MakeInput(const CaseFile& wanted, unsigned long number) {
    IWbemClassObject* definition = nullptr;
    CWbemRepository::Process().GetObject(kClassName, 0, nullptr, &definition, nullptr);
    const ClassObject ownedDefinition(definition);
    IWbemClassObject* signature = nullptr;
    definition->GetMethod("GetPDInfo", 0, &signature, nullptr);
    const ClassObject ownedSignature(signature);
    IWbemClassObject* instance = nullptr;
    signature->SpawnInstance(0, &instance);
    ClassObject input(instance);

    for (const auto& [key, parameter] :
         {std::pair("ctrl_no", "CtrlNo"), {"encl_no", "EnclNo"}, {"pd_no", "PDNo"}}) {
        if (const std::optional<std::string> text = wanted.OptionalText(key)) {
            input->Put(parameter, *text);
        }
    }
    if (wanted.Choice("has_authority", "yes", "no")) {
        input->Put(CZORBALT_ServerService::APP_KEY_PROPERTY, wanted.Text("app_key"));
    } else if (number % 2 == 0) {
        input->Put(CZORBALT_ServerService::APP_KEY_PROPERTY, "wrong" + wanted.Text("app_key"));
    }
    return input;
}

IWbemObjectManager& ManagerFor(const CaseFile& wanted) {
    static CWbemRepository& noClass = *CWbemRepository::Create();
    static CWbemRepository& noXmlData = MakeRepository({});
    static CWbemRepository& numberForXmlData = MakeRepository({{"XmlData", WbemType::Sint32}});
    if (!wanted.Choice("klass", "present", "absent")) {
        return noClass;
    }
    switch (wanted.Number("store_status")) {
        case WBEM_S_NO_ERROR:
            return CWbemRepository::Process();
        case WBEM_E_NOT_FOUND:
            return noXmlData;
        case WBEM_E_TYPE_MISMATCH:
            return numberForXmlData;
        default:
            throw std::runtime_error("no class stores \"XmlData\" with that status");
    }
}

}  // namespace replay
