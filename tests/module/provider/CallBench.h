#pragma once

#include "provider/CZORBALT_MngSrvRaid.h"
#include "test_support/MethodCaller.h"
#include "test_support/ModuleTest.h"

#include "qel/portable/CWbemRepository.h"

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace testsupport {

/// A test that calls the provider as the framework does.
class CallTest : public ModuleTest {
  protected:
    CallTest();
    ~CallTest() override;

    /// Calls a method with the given string parameters; returns the status.
    DWORD Call(const std::string& method, const std::map<std::string, std::string>& parameters = {});

    [[nodiscard]] DWORD ReturnValue() const { return std::get<std::uint32_t>(m_Sink.m_ReturnValue); }
    [[nodiscard]] bool HasXml() const { return std::holds_alternative<std::string>(m_Sink.m_XmlData); }

    /// Lines of the last call's trace.
    [[nodiscard]] std::vector<std::string> Trace() const { return m_Trace.Lines(); }

    /// Reason texts reported to the administrator.
    [[nodiscard]] std::vector<std::string> Messages() const { return m_Trace.Texts(0); }

    /// A server of so many controllers, each with an empty report of every kind.
    void AnswerEmptyReports(int controllers);

    /// Whether the conversion library is loaded in this process.
    [[nodiscard]] static bool IsLibraryOpen();

    RecordingSink m_Sink;
    std::unique_ptr<CZORBALT_MngSrvRaid> m_Provider;
};

}  // namespace testsupport
