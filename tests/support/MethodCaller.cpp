#include "test_support/MethodCaller.h"

#include "qel/portable/CWbemRepository.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

namespace testsupport {

HRESULT RecordingSink::Indicate(long count, IWbemClassObject** objects) {
    EXPECT_EQ(count, 1);
    m_Calls.emplace_back("Indicate");
    EXPECT_EQ(objects[0]->Get("ReturnValue", &m_ReturnValue), 0);
    objects[0]->Get("XmlData", &m_XmlData);
    m_OnIndicate();
    return 0;
}

HRESULT RecordingSink::SetStatus(long flags, HRESULT status, BSTR text, IWbemClassObject* object) {
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(object, nullptr);
    char line[32];
    std::snprintf(line, sizeof line, "SetStatus %08x", static_cast<unsigned>(status));
    m_Calls.emplace_back(line);
    return 0;
}

namespace {

struct Releaser {
    void operator()(IWbemClassObject* object) const { object->Release(); }
};
using OwnedObject = std::unique_ptr<IWbemClassObject, Releaser>;

// The input instance of a method; none for a method that the class lacks.
OwnedObject MakeInput(const std::string& method, const std::map<std::string, std::string>& parameters) {
    IWbemClassObject* definition = nullptr;
    CWbemRepository::Process().GetObject("ZORBALT_MngSrvRaid", 0, nullptr, &definition, nullptr);
    const OwnedObject ownedDefinition(definition);
    IWbemClassObject* signature = nullptr;
    if (definition == nullptr || definition->GetMethod(method.c_str(), 0, &signature, nullptr) < 0) {
        return nullptr;
    }
    const OwnedObject ownedSignature(signature);
    IWbemClassObject* input = nullptr;
    signature->SpawnInstance(0, &input);
    for (const auto& [name, value] : parameters) {
        EXPECT_EQ(input->Put(name.c_str(), WbemValue(value)), 0) << name;
    }
    return OwnedObject(input);
}

}  // namespace

DWORD CallMethod(CZORBALT_ServerService& provider, const std::string& method,
                 const std::map<std::string, std::string>& parameters, RecordingSink& sink) {
    const OwnedObject input = MakeInput(method, parameters);
    std::string className = "ZORBALT_MngSrvRaid";
    std::string methodName = method;
    return provider.ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input.get(), &sink);
}

}  // namespace testsupport
