#include "comlib/WbemObject.h"

#include <algorithm>
#include <utility>

namespace qel {
namespace {

constexpr const char* kAppKeyProperty = "__AppKey";

HRESULT Failure(WbemStatus status) {
    return static_cast<HRESULT>(status);
}

bool Suits(const WbemValue& value, WbemType type) {
    if (std::holds_alternative<std::monostate>(value)) {
        return true;
    }
    switch (type) {
        case WbemType::Boolean:
            return std::holds_alternative<bool>(value);
        case WbemType::Sint32:
            return std::holds_alternative<std::int32_t>(value);
        case WbemType::Uint32:
            return std::holds_alternative<std::uint32_t>(value);
        case WbemType::String:
            return std::holds_alternative<std::string>(value);
    }
    return false;
}

HRESULT CopyNames(const std::vector<WbemProperty>& properties, std::vector<std::string>* names) {
    if (names == nullptr) {
        return Failure(WBEM_E_INVALID_PARAMETER);
    }
    names->clear();
    for (const WbemProperty& property : properties) {
        names->push_back(property.name);
    }
    return WBEM_S_NO_ERROR;
}

HRESULT Spawn(std::vector<WbemProperty> properties, IWbemClassObject** instance) {
    if (instance == nullptr) {
        return Failure(WBEM_E_INVALID_PARAMETER);
    }
    *instance = new WbemInstance(std::move(properties));
    return WBEM_S_NO_ERROR;
}

// Releases an object unless it is handed on, so that a failing second signature does not lose the first.
struct Releaser {
    void operator()(IWbemClassObject* object) const { object->Release(); }
};
using OwnedObject = std::unique_ptr<IWbemClassObject, Releaser>;

OwnedObject MakeSignature(std::vector<WbemProperty> parameters) {
    return OwnedObject(new WbemInstance(std::move(parameters)));
}

}  // namespace

WbemInstance::WbemInstance(std::vector<WbemProperty> declared) : m_Declared(std::move(declared)) {
    m_Declared.push_back({kAppKeyProperty, WbemType::String});
    m_Values.resize(m_Declared.size());
}

std::size_t WbemInstance::Find(const char* name) const {
    const auto isNamed = [name](const WbemProperty& property) {
        return name != nullptr && property.name == name;
    };
    return static_cast<std::size_t>(std::find_if(m_Declared.begin(), m_Declared.end(), isNamed) -
                                    m_Declared.begin());
}

HRESULT WbemInstance::Get(const char* name, WbemValue* value) const {
    const std::size_t at = Find(name);
    if (value == nullptr) {
        return Failure(WBEM_E_INVALID_PARAMETER);
    }
    if (at == m_Declared.size()) {
        return Failure(WBEM_E_NOT_FOUND);
    }
    *value = m_Values[at];
    return WBEM_S_NO_ERROR;
}

HRESULT WbemInstance::Put(const char* name, const WbemValue& value) {
    const std::size_t at = Find(name);
    if (at == m_Declared.size()) {
        return Failure(WBEM_E_NOT_FOUND);
    }
    if (!Suits(value, m_Declared[at].type)) {
        return Failure(WBEM_E_TYPE_MISMATCH);
    }
    m_Values[at] = value;
    return WBEM_S_NO_ERROR;
}

HRESULT WbemInstance::GetNames(std::vector<std::string>* names) const {
    return CopyNames({m_Declared.begin(), std::prev(m_Declared.end())}, names);
}

HRESULT WbemInstance::GetMethod(const char* /*name*/, long /*flags*/, IWbemClassObject** /*inSignature*/,
                                IWbemClassObject** /*outSignature*/) {
    return Failure(WBEM_E_INVALID_METHOD);
}

HRESULT WbemInstance::SpawnInstance(long /*flags*/, IWbemClassObject** instance) {
    return Spawn({m_Declared.begin(), std::prev(m_Declared.end())}, instance);
}

WbemClassDefinition::WbemClassDefinition(std::shared_ptr<const WbemClass> declaration)
    : m_Declaration(std::move(declaration)) {}

HRESULT WbemClassDefinition::Get(const char* /*name*/, WbemValue* /*value*/) const {
    return Failure(WBEM_E_NOT_FOUND);  // Declarations carry no default values.
}

HRESULT WbemClassDefinition::Put(const char* /*name*/, const WbemValue& /*value*/) {
    return Failure(WBEM_E_NOT_SUPPORTED);
}

HRESULT WbemClassDefinition::GetNames(std::vector<std::string>* names) const {
    return CopyNames(m_Declaration->properties, names);
}

HRESULT WbemClassDefinition::GetMethod(const char* name, long /*flags*/, IWbemClassObject** inSignature,
                                       IWbemClassObject** outSignature) {
    const auto& methods = m_Declaration->methods;
    const auto isNamed = [name](const WbemMethod& method) { return name != nullptr && method.name == name; };
    const auto method = std::find_if(methods.begin(), methods.end(), isNamed);
    if (method == methods.end()) {
        return Failure(WBEM_E_INVALID_METHOD);
    }
    OwnedObject in = inSignature == nullptr ? nullptr : MakeSignature(method->in);
    if (outSignature != nullptr) {
        std::vector<WbemProperty> outputs = method->out;
        outputs.push_back({"ReturnValue", WbemType::Uint32});
        *outSignature = MakeSignature(std::move(outputs)).release();
    }
    if (inSignature != nullptr) {
        *inSignature = in.release();
    }
    return WBEM_S_NO_ERROR;
}

HRESULT WbemClassDefinition::SpawnInstance(long /*flags*/, IWbemClassObject** instance) {
    return Spawn(m_Declaration->properties, instance);
}

}  // namespace qel
