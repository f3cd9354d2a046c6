#include "calls/InstallRoot.h"

#include "basics/Failure.h"

#include "qel/CFileUtility.h"
#include "qel/CStringUtil.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace calls {
namespace {

namespace fs = std::filesystem;

// As the environment variable that it goes with, the process's own.
std::string g_knownRoot;
std::string g_privateRoot;

std::string FrameworkRoot() {
    return CFileUtility::GetInstallPath(INSTALLPATH_ROOT);
}

}  // namespace

std::string InstallRoot() {
    return g_privateRoot.empty() ? FrameworkRoot() : g_knownRoot;
}

void UsePrivateRoot(const std::string& folder) {
    const std::string known = FrameworkRoot();
    const fs::path target = fs::absolute(known);
    std::error_code error;
    // The application key is looked for below etc/, be it there or not.
    for (const char* const name : {"cim", "etc"}) {
        if (!error) {
            fs::create_symlink(target / name, fs::path(folder) / name, error);
        }
    }
    if (!error && ::setenv("ZORBALT_INSTALL_DIR", folder.c_str(), 1) != 0) {
        error.assign(errno, std::generic_category());
    }
    if (error) {
        basics::FailSurroundings("a folder for result files cannot be made in " +
                                 fs::path(folder).parent_path().string() + ": " + error.message() +
                                 "; name another directory by the variable TMPDIR");
    }
    g_knownRoot = known;
    g_privateRoot = folder;
}

std::string ResultDirectory() {
    return FrameworkRoot() + "/tmp/MSRAID";
}

std::string ResultPlace() {
    return g_privateRoot.empty() ? ResultDirectory() : fs::path(g_privateRoot).parent_path().string();
}

std::string WithKnownRoot(std::string text) {
    if (!g_privateRoot.empty()) {
        CStringUtil::strReplace(text, g_privateRoot, g_knownRoot);
    }
    return text;
}

}  // namespace calls
