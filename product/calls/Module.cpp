#include "calls/Module.h"

#include "basics/Failure.h"
#include "calls/InstallRoot.h"

#include "qel/CFileUtility.h"

#include <dlfcn.h>

#include <exception>

namespace calls {
namespace {

constexpr const char* kFileName = "libqelp_ZORBALT_MngSrvRaid.so";
constexpr const char* kEntryPoint = "create";
using Create = CZORBALT_ServerService* (*)();

[[noreturn]] void Fail(const std::string& why) {
    basics::FailSurroundings("the RAID module cannot be loaded: " + why +
                             "; check the installation or name one by --install-dir");
}

std::string LastLoaderError() {
    const char* const text = dlerror();
    return text == nullptr ? "no reason is known" : text;
}

}  // namespace

void Module::CloseLibrary::operator()(void* library) const noexcept {
    dlclose(library);
}

std::string Module::DefaultPath() {
    const std::string directory = WithKnownRoot(CFileUtility::GetInstallPath(INSTALLPATH_CIM));
    return directory.empty() ? kFileName : directory + "/" + kFileName;
}

Module Module::Load(const std::string& path) {
    Library library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        Fail(LastLoaderError());
    }
    const auto create = reinterpret_cast<Create>(dlsym(library.get(), kEntryPoint));
    if (create == nullptr) {
        Fail(LastLoaderError());
    }
    std::unique_ptr<CZORBALT_ServerService> provider;
    std::string why = "create gave no provider";
    try {
        provider.reset(create());
    } catch (const std::exception& exception) {
        // Taken along as text: the exception may not outlive the library that threw it.
        why = std::string("create failed: ") + exception.what();
    }
    if (!provider) {
        Fail(path + ": " + why);
    }
    return {std::move(library), std::move(provider)};
}

}  // namespace calls
