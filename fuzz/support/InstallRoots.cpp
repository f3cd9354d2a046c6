#include "InstallRoots.h"

#include "CheckedLibrary.h"
#include "Property.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace fuzzing {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNames[] = {"plain", "with-key", "without-library"};
std::size_t g_closings = 0;

constexpr const char* kLibraryFile = "libqel_MngSrv_QelLib.so";

}  // namespace

InstallRoots& InstallRoots::Process() {
    static InstallRoots roots;
    return roots;
}

InstallRoots::InstallRoots() {
    for (const Root root : {Root::Plain, Root::WithKey, Root::WithoutLibrary}) {
        const fs::path path = PathOf(root);
        fs::create_directories(path / "tmp" / "MSRAID");
        fs::create_directories(path / "cim");
        if (root != Root::WithoutLibrary) {
            const fs::path library = path / "cim" / kLibraryFile;
            fs::create_symlink(FUZZ_FORWARDING_LIBRARY, library);
            Require(::dlopen(library.c_str(), RTLD_NOW) != nullptr, "the forwarding library can be loaded");
        }
    }
    fs::create_directories(fs::path(PathOf(Root::WithKey)) / "etc");
    testsupport::WriteFile(PathOf(Root::WithKey) + "/etc/app.key", kKey);
}

std::string InstallRoots::PathOf(Root root) const {
    return m_Folder / kNames[static_cast<int>(root)];
}

void InstallRoots::Use(Root root) const {
    g_closings = 0;
    ::setenv("ZORBALT_INSTALL_DIR", PathOf(root).c_str(), 1);
}

std::size_t InstallRoots::LibraryClosings() {
    return g_closings;
}

}  // namespace fuzzing

extern "C" {

int __real_dlclose(void* handle);

int __wrap_dlclose(void* handle) {
    fuzzing::CheckedLibrary::RequireNothingAlive();
    ++fuzzing::g_closings;
    return __real_dlclose(handle);
}
}
