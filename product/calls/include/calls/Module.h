#pragma once

#include "qel/CZORBALT_ServerService.h"

#include <memory>
#include <string>

namespace calls {

/// The provider module, loaded, with its one provider object. The provider is deleted before the module is
/// unloaded. One thread at a time.
class Module final {
  public:
    /// The module's file below the install root; the bare name where no root is known.
    [[nodiscard]] static std::string DefaultPath();

    /// Throws basics::Failure(Surroundings) where the module cannot be loaded or gives no provider.
    [[nodiscard]] static Module Load(const std::string& path);

    [[nodiscard]] CZORBALT_ServerService& Provider() const { return *m_Provider; }

  private:
    struct CloseLibrary {
        void operator()(void* library) const noexcept;
    };
    using Library = std::unique_ptr<void, CloseLibrary>;

    Module(Library library, std::unique_ptr<CZORBALT_ServerService> provider)
        : m_Library(std::move(library)), m_Provider(std::move(provider)) {}

    // In this order: the provider's code is in the library.
    Library m_Library;
    std::unique_ptr<CZORBALT_ServerService> m_Provider;
};

}  // namespace calls
