#include "tests/provider/CallBench.h"

#include <cstdio>

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

CallTest::CallTest() : m_Provider(std::make_unique<CZORBALT_MngSrvRaid>()) {
    m_Tool.Answer("v.txt", "Product Version : 3.9\n");
}

CallTest::~CallTest() = default;

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

DWORD CallTest::Call(const std::string& method, const std::map<std::string, std::string>& parameters) {
    const OwnedObject input = MakeInput(method, parameters);
    m_Trace.Clear();
    m_Sink.m_Calls.clear();
    std::string className = "ZORBALT_MngSrvRaid";
    std::string methodName = method;
    return m_Provider->ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input.get(), &m_Sink);
}

void CallTest::AnswerEmptyReports(int controllers) {
    for (int ctrlNo = 0; ctrlNo < controllers; ++ctrlNo) {
        const std::string number = std::to_string(ctrlNo);
        m_Tool.Answer("ctrlinfo_a" + number + ".txt", "RAID Controller : " + number + "\n");
        m_Tool.Answer("ldpdinfo_a" + number + ".txt", "");
        m_Tool.Answer("pdinfo_a" + number + ".txt", "");
    }
}

}  // namespace testsupport
