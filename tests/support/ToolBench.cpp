#include "tests/support/ToolBench.h"

#include "host/Sandbox.h"

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace testsupport {
namespace {

const fs::path kToolDirectory = "/opt/zorbalt/vdk/cli";
const fs::path kStateDirectory = "/opt/zorbalt/vdk/state";

fs::path MakeTemporaryDirectory() {
    std::string pattern = fs::temp_directory_path() / "msraid-test-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), pattern);
    }
    return pattern;
}

// Shared by all tests of the process, since a process enters its private view once.
struct ScenarioDirectory {
    fs::path path = MakeTemporaryDirectory();
    ScenarioDirectory() = default;
    ScenarioDirectory(const ScenarioDirectory&) = delete;
    ScenarioDirectory& operator=(const ScenarioDirectory&) = delete;
    ~ScenarioDirectory() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

const fs::path& Scenario() {
    static const ScenarioDirectory directory;
    return directory.path;
}

void Empty(const fs::path& directory) {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        fs::remove_all(entry.path());
    }
}

void Require(int result, const char* what) {
    if (result != 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

}  // namespace

void EnterToolBench() {
    host::EnterSandbox(TEST_SUPPORT_SIMULATOR, Scenario());
}

ToolBench::ToolBench() {
    Empty(Scenario());
    Empty(kStateDirectory);
}

ToolBench::~ToolBench() {
    if (m_IsUninstalled) {
        ::umount2(kToolDirectory.c_str(), MNT_DETACH);
    }
}

void ToolBench::Answer(const std::string& file, const std::string& text) {
    std::ofstream out(Scenario() / file, std::ios::binary);
    out << text;
    if (!out.flush()) {
        throw std::runtime_error("cannot write " + file);
    }
}

void ToolBench::Uninstall() {
    Require(::mount("tmpfs", kToolDirectory.c_str(), "tmpfs", 0, nullptr), "cover the tool");
    m_IsUninstalled = true;
}

std::vector<std::string> ToolBench::Runs() {
    std::ifstream log(kStateDirectory / "runs.log");
    std::vector<std::string> runs;
    for (std::string line; std::getline(log, line);) {
        runs.push_back(line);
    }
    return runs;
}

InstallRoot::InstallRoot() : m_Path(MakeTemporaryDirectory()) {
    fs::create_directory(m_Path / "cim");
    UseLibrary(fs::path(TEST_SUPPORT_LIBRARIES) / "liblibrary_without_nothing.so");
    Require(::setenv("ZORBALT_INSTALL_DIR", m_Path.c_str(), 1), "setenv");
}

InstallRoot::~InstallRoot() {
    ::unsetenv("ZORBALT_INSTALL_DIR");
    std::error_code ignored;
    fs::remove_all(m_Path, ignored);
}

void InstallRoot::UseLibrary(const fs::path& file) const {
    const fs::path link = m_Path / "cim" / "libqel_MngSrv_QelLib.so";
    fs::remove(link);
    fs::create_symlink(file, link);
}

void InstallRoot::SetAppKey(const std::string& key) const {
    fs::create_directory(m_Path / "etc");
    std::ofstream(m_Path / "etc" / "app.key") << key << '\n';
}

std::vector<std::string> InstallRoot::ResultFiles() const {
    std::vector<std::string> names;
    if (fs::exists(m_Path / "tmp" / "MSRAID")) {
        for (const fs::directory_entry& entry : fs::directory_iterator(m_Path / "tmp" / "MSRAID")) {
            names.push_back(entry.path().filename());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace testsupport
