#include "test_support/ToolBench.h"

#include "sandbox/Sandbox.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace testsupport {
namespace {

const fs::path kToolDirectory = "/opt/zorbalt/vdk/cli";
const fs::path kStateDirectory = "/opt/zorbalt/vdk/state";

// Shared by all tests of the process, since a process enters its private view once.
const fs::path& Scenario() {
    static const TempFolder folder;
    return folder.Path();
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
    sandbox::EnterSandbox(TEST_SUPPORT_SIMULATOR, Scenario());
}

ToolBench::ToolBench() {
    StartOver();
}

ToolBench::~ToolBench() {
    UncoverTool();
}

void ToolBench::StartOver() {
    UncoverTool();
    Empty(Scenario());
    Empty(kStateDirectory);
}

void ToolBench::Answer(const std::string& file, const std::string& text) {
    WriteFile(Scenario() / file, text);
}

void ToolBench::Uninstall() {
    CoverTool();
}

void ToolBench::UseScript(const std::string& script) {
    constexpr const char* kBeginning =
        "#!/bin/sh\n"
        "simulate() {\n"
        "    VDKSIM_SCENARIO=/opt/zorbalt/vdk/scenario VDKSIM_STATE=/opt/zorbalt/vdk/state \\\n"
        "        " TEST_SUPPORT_SIMULATOR
        " \"$@\"\n"
        "}\n"
        "file=$(readlink /proc/$$/fd/1)\n"
        "arguments=$*\n";
    UncoverTool();
    CoverTool();
    const fs::path tool = kToolDirectory / "vdkcli";
    WriteFile(tool, kBeginning + script);
    fs::permissions(tool, fs::perms{0755});
}

void ToolBench::CoverTool() {
    Require(::mount("tmpfs", kToolDirectory.c_str(), "tmpfs", 0, "mode=0755"), "cover the tool");
    m_IsCovered = true;
}

void ToolBench::UncoverTool() {
    if (m_IsCovered) {
        ::umount2(kToolDirectory.c_str(), MNT_DETACH);
        m_IsCovered = false;
    }
}

void ToolBench::LetEverybodyIn() {
    fs::permissions(Scenario(), fs::perms{0755});
    fs::permissions(kStateDirectory, fs::perms::all);
}

std::vector<std::string> ToolBench::Runs() {
    std::ifstream log(kStateDirectory / "runs.log");
    std::vector<std::string> runs;
    for (std::string line; std::getline(log, line);) {
        runs.push_back(line);
    }
    return runs;
}

InstallRoot::InstallRoot() {
    fs::create_directory(Path() / "cim");
    UseLibrary(fs::path(TEST_SUPPORT_LIBRARIES) / "liblibrary_without_nothing.so");
    Require(::setenv("ZORBALT_INSTALL_DIR", Path().c_str(), 1), "setenv");
}

InstallRoot::~InstallRoot() {
    for (const std::string& file : ResultFiles()) {
        ::umount2((ResultDirectory() / file).c_str(), MNT_DETACH);
        ::chmod(ResultDirectory().c_str(), S_IRWXU);
    }
    ::unsetenv("ZORBALT_INSTALL_DIR");
}

void InstallRoot::UseLibrary(const fs::path& file) const {
    const fs::path link = Path() / "cim" / "libqel_MngSrv_QelLib.so";
    fs::remove(link);
    fs::create_symlink(file, link);
}

void InstallRoot::SetAppKey(const std::string& key) const {
    fs::create_directory(Path() / "etc");
    WriteFile(Path() / "etc" / "app.key", key + "\n");
}

std::string InstallRoot::PinResultFiles() const {
    const std::string directory = ResultDirectory().string();
    return "for f in " + directory + "/*; do mount --bind $f $f || chmod a-w " + directory +
           "; done 2>/dev/null";
}

std::vector<std::string> InstallRoot::ResultFiles() const {
    return TempFolder::NamesIn(ResultDirectory());
}

}  // namespace testsupport
