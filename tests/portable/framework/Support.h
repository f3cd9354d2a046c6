#pragma once

#include "test_support/TempFolder.h"

#include "qel/IWbemClassObject.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qel::test {

using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::WriteFile;

// Sets an environment variable, or takes it away, for as long as it lives.
class ScopedVariable final {
  public:
    ScopedVariable(std::string name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    std::string m_Name;
    std::optional<std::string> m_Before;
};

// Leads standard error to another descriptor for as long as it lives. Does not own that descriptor.
class ScopedStandardError final {
  public:
    explicit ScopedStandardError(int target);
    ~ScopedStandardError();
    ScopedStandardError(const ScopedStandardError&) = delete;
    ScopedStandardError& operator=(const ScopedStandardError&) = delete;

  private:
    int m_Before;
};

// Exit status of a forked child that runs `body` and ends with its result; -1 when a signal ended it.
[[nodiscard]] int RunInChild(const std::function<int()>& body);

struct Releaser {
    void operator()(IQelUnknown* object) const { object->Release(); }
};
template <class Interface>
using Owned = std::unique_ptr<Interface, Releaser>;

// A status code as a result.
[[nodiscard]] constexpr HRESULT Result(WbemStatus status) {
    return static_cast<HRESULT>(status);
}

}  // namespace qel::test
