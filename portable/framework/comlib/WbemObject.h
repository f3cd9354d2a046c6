#pragma once

#include "qel/portable/CWbemRepository.h"

#include <atomic>
#include <memory>

namespace qel {

/// Reference counting for the framework's own objects: starts with the creator's one reference.
template <class Interface>
class Counted : public Interface {
  public:
    DWORD AddRef() noexcept final { return m_References.fetch_add(1, std::memory_order_relaxed) + 1; }
    DWORD Release() noexcept final {
        const DWORD left = m_References.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  private:
    std::atomic<DWORD> m_References{1};
};

/// An instance: declared properties with their values, and the system property that carries the application
/// key. Instances and signatures have no methods of their own.
class WbemInstance final : public Counted<IWbemClassObject> {
  public:
    explicit WbemInstance(std::vector<WbemProperty> declared);

    HRESULT Get(const char* name, WbemValue* value) const override;
    HRESULT Put(const char* name, const WbemValue& value) override;
    HRESULT GetNames(std::vector<std::string>* names) const override;
    HRESULT GetMethod(const char* name, long flags, IWbemClassObject** inSignature,
                      IWbemClassObject** outSignature) override;
    HRESULT SpawnInstance(long flags, IWbemClassObject** instance) override;

  private:
    [[nodiscard]] std::size_t Find(const char* name) const;

    std::vector<WbemProperty> m_Declared;  // the system property stands last
    std::vector<WbemValue> m_Values;       // as many as declared
};

/// A class of the repository.
class WbemClassDefinition final : public Counted<IWbemClassObject> {
  public:
    explicit WbemClassDefinition(std::shared_ptr<const WbemClass> declaration);

    HRESULT Get(const char* name, WbemValue* value) const override;
    HRESULT Put(const char* name, const WbemValue& value) override;
    HRESULT GetNames(std::vector<std::string>* names) const override;
    HRESULT GetMethod(const char* name, long flags, IWbemClassObject** inSignature,
                      IWbemClassObject** outSignature) override;
    HRESULT SpawnInstance(long flags, IWbemClassObject** instance) override;

  private:
    std::shared_ptr<const WbemClass> m_Declaration;
};

/// The classes that the framework comes with.
[[nodiscard]] std::vector<WbemClass> ShippedClasses();

}  // namespace qel
