#pragma once

#include "qel/IWbemObjectManager.h"
#include "qel/QelExport.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

enum class WbemType { Boolean, Sint32, Uint32, String };

struct WbemProperty {
    std::string name;
    WbemType type;
};

struct WbemMethod {
    std::string name;
    std::vector<WbemProperty> in;
    std::vector<WbemProperty> out;  ///< without "ReturnValue", which every method has
};

struct WbemClass {
    std::string name;
    std::vector<WbemProperty> properties;
    std::vector<WbemMethod> methods;
};

/// The class repository: class declarations by name, and the object manager that gives them out.
///
/// Safe to use from any thread. A class object that was given out keeps its declaration when the class is
/// declared anew or removed.
class QEL_API CWbemRepository final : public IWbemObjectManager {
  public:
    /// An empty repository with one reference, the caller's.
    [[nodiscard]] static CWbemRepository* Create();

    /// The repository of this process, with the classes that the framework ships. Never deleted.
    [[nodiscard]] static CWbemRepository& Process();

    /// Adds a class or takes the place of the one with the same name.
    void DeclareClass(WbemClass declaration);
    void RemoveClass(const std::string& name);

    HRESULT GetObject(const std::string& path, long flags, IWbemContext* context, IWbemClassObject** object,
                      void** callResult) override;
    DWORD AddRef() noexcept override;
    DWORD Release() noexcept override;

  private:
    CWbemRepository() = default;
    ~CWbemRepository() override = default;

    std::mutex m_Mutex;
    std::map<std::string, std::shared_ptr<const WbemClass>> m_Classes;
    std::atomic<DWORD> m_References{1};
};
