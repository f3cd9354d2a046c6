#include "qel/CFileUtility.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

// Asked once, while the library is loaded: a path relative to the working directory is only good until then.
std::string FindOwnRoot() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&FindOwnRoot), &info) == 0 || info.dli_fname == nullptr) {
        return "";
    }
    std::error_code error;
    const std::filesystem::path library = std::filesystem::canonical(info.dli_fname, error);
    return error ? "" : library.parent_path().parent_path().string();
}
const std::string g_ownRoot = FindOwnRoot();

std::string FindRoot() {
    // Libraries are loaded from there: a program with more rights than its caller does not let the caller
    // choose.
    const char* const chosen = ::secure_getenv("ZORBALT_INSTALL_DIR");
    return chosen != nullptr ? chosen : g_ownRoot;
}

}  // namespace

std::string CFileUtility::GetInstallPath(int kind) {
    std::string root = FindRoot();
    while (root.size() > 1 && root.ends_with('/')) {
        root.pop_back();
    }
    if (root.empty()) {
        return "";
    }
    switch (kind) {
        case INSTALLPATH_ROOT:
            return root;
        case INSTALLPATH_CIM:
            return root == "/" ? "/cim" : root + "/cim";
        default:
            return "";
    }
}

bool CFileUtility::IsFileExist(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}
