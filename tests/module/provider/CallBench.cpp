#include "CallBench.h"

#include <dlfcn.h>

#include <filesystem>

namespace testsupport {

CallTest::CallTest() : m_Provider(std::make_unique<CZORBALT_MngSrvRaid>()) {
    m_Tool.Answer("v.txt", "Product Version : 3.9\n");
}

CallTest::~CallTest() = default;

DWORD CallTest::Call(const std::string& method, const std::map<std::string, std::string>& parameters) {
    m_Trace.Clear();
    m_Sink.m_Calls.clear();
    return CallMethod(*m_Provider, method, parameters, m_Sink);
}

void CallTest::AnswerEmptyReports(int controllers) {
    for (int ctrlNo = 0; ctrlNo < controllers; ++ctrlNo) {
        const std::string number = std::to_string(ctrlNo);
        m_Tool.Answer("ctrlinfo_a" + number + ".txt", "RAID Controller : " + number + "\n");
        m_Tool.Answer("ldpdinfo_a" + number + ".txt", "");
        m_Tool.Answer("pdinfo_a" + number + ".txt", "");
    }
}

bool CallTest::IsLibraryOpen() {
    const std::string file = std::filesystem::path(TEST_SUPPORT_LIBRARIES) / "liblibrary_without_nothing.so";
    void* const handle = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) {
        ::dlclose(handle);
    }
    return handle != nullptr;
}

}  // namespace testsupport
