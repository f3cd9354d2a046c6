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

DWORD CallTest::Call(const std::string& method, const std::map<std::string, std::string>& parameters) {
    IWbemClassObject* definition = nullptr;
    IWbemClassObject* signature = nullptr;
    IWbemClassObject* input = nullptr;
    CWbemRepository::Process().GetObject("ZORBALT_MngSrvRaid", 0, nullptr, &definition, nullptr);
    if (definition != nullptr) {
        definition->GetMethod(method.c_str(), 0, &signature, nullptr);
    }
    if (signature != nullptr) {
        signature->SpawnInstance(0, &input);
    }
    for (const auto& [name, value] : parameters) {
        EXPECT_EQ(input->Put(name.c_str(), WbemValue(value)), 0) << name;
    }
    m_Trace.Clear();
    m_Sink.m_Calls.clear();
    std::string className = "ZORBALT_MngSrvRaid";
    std::string methodName = method;
    const DWORD status =
        m_Provider->ExecMethodAsync(className.data(), methodName.data(), 0, nullptr, input, &m_Sink);
    for (IWbemClassObject* const object : {input, signature, definition}) {
        if (object != nullptr) {
            object->Release();
        }
    }
    return status;
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
