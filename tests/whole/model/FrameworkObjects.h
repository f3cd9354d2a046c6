#pragma once

#include "CaseFile.h"

#include "qel/CZORBALT_ServerService.h"
#include "qel/portable/CTraceOutput.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace replay {

/// Drops one reference.
struct Releaser {
    void operator()(IQelUnknown* object) const { object->Release(); }
};
using ClassObject = std::unique_ptr<IWbemClassObject, Releaser>;

/// Hears the module's trace while it stands.
class TraceRecorder final : public ITraceListener {
  public:
    TraceRecorder() { CTraceOutput::SetListener(this); }
    ~TraceRecorder() override { CTraceOutput::SetListener(nullptr); }
    void OnTrace(const TraceLine& line) noexcept override;

    /// Level and text, in order.
    [[nodiscard]] const std::vector<std::pair<int, std::string>>& Lines() const { return m_Lines; }

  private:
    std::vector<std::pair<int, std::string>> m_Lines;
};

/// Receives what a call reports. Keeps the objects indicated.
class RecordingSink final : public IWbemObjectSink {
  public:
    DWORD AddRef() noexcept override { return ++m_References; }
    DWORD Release() noexcept override { return --m_References; }
    HRESULT Indicate(long count, IWbemClassObject** objects) override;
    HRESULT SetStatus(long flags, HRESULT status, BSTR text, IWbemClassObject* object) override;

    std::size_t m_Indicates = 0;
    std::vector<std::uint32_t> m_Statuses;
    ClassObject m_Output;
    std::vector<std::string> m_Faults;
    DWORD m_References = 1;
};

/// The module, loaded once, and its providers: the usual one, and one whose construction lost the wrapper.
/// They live as long as the process, as in the framework.
class LoadedModule final {
  public:
    explicit LoadedModule(const std::filesystem::path& file);

    [[nodiscard]] CZORBALT_ServerService& Provider(bool hasWrapper) const {
        return hasWrapper ? *m_Provider : *m_ProviderWithoutWrapper;
    }

  private:
    CZORBALT_ServerService* m_Provider = nullptr;
    CZORBALT_ServerService* m_ProviderWithoutWrapper = nullptr;
};

/// The input instance that a case asks for. Where the caller has no authority, `number` chooses between a
/// wrong key and none.
[[nodiscard]] ClassObject MakeInput(const CaseFile& wanted, unsigned long number);

/// An object manager whose class is absent, or takes no "XmlData", where the case says so. Lives as long as
/// the process.
[[nodiscard]] IWbemObjectManager& ManagerFor(const CaseFile& wanted);

}  // namespace replay
