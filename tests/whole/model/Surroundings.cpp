#include "Surroundings.h"

#include "FrameworkHooks.h"

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace replay {
namespace {

constexpr const char* kTool = "/opt/zorbalt/vdk/cli/vdkcli";
constexpr const char* kToolAway = "/opt/zorbalt/vdk/vdkcli";
constexpr const char* kLibraryFile = "libqel_MngSrv_QelLib.so";

const fs::path kRoot = fs::path(kReplayFolder) / "root";
const fs::path kKeyFile = kRoot / "etc/app.key";
const fs::path kNoLibrary = fs::path(kReplayFolder) / "no-library";
const fs::path kNoElfFile = fs::path(kReplayFolder) / "no-elf-file";

}  // namespace

Surroundings::Surroundings(const fs::path& buildRoot) : m_Libraries(buildRoot / "replay") {
    fs::create_directories(fs::path(kTool).parent_path());
    fs::copy_file(m_Libraries / "vdkcli", kTool);
    fs::create_directories(kKeyFile.parent_path());
    fs::create_directories(kNoLibrary);
    fs::create_directories(kNoElfFile);
    std::ofstream(kNoElfFile / kLibraryFile) << "no library\n";
}

void Surroundings::Arrange(const CaseFile& wanted, const fs::path& folder, unsigned long number) {
    const bool hasRoot = wanted.Choice("root", "normal", "empty");
    Hooks().m_RootPath = hasRoot ? kRoot.string() : "";
    m_ResultFolder = Hooks().m_RootPath + "/tmp/MSRAID";
    m_OtherResultFolder = (hasRoot ? "" : kRoot.string()) + "/tmp/MSRAID";
    Hooks().m_Pauses = 0;
    Hooks().m_OtherPauses = 0;
    PlaceTool(wanted.Choice("tool", "installed", "missing"));
    PlaceKey(wanted);
    PlaceLibrary(wanted, number);
    fs::remove(kRunLog);
    ::setenv("REPLAY_CASE", folder.c_str(), 1);
    ::setenv("REPLAY_LOG", kRunLog, 1);
}

void Surroundings::PlaceTool(bool isInstalled) const {
    if (fs::exists(kTool) != isInstalled) {
        fs::rename(isInstalled ? kToolAway : kTool, isInstalled ? kTool : kToolAway);
    }
}

void Surroundings::PlaceKey(const CaseFile& wanted) const {
    fs::remove(kKeyFile);
    const std::string& key = wanted.Text("app_key");
    if (key.empty()) {
        return;
    }
    if (wanted.Text("root") == "empty") {
        throw std::runtime_error("without an install root there is no application key");
    }
    std::ofstream(kKeyFile) << key << '\n';
}

void Surroundings::PlaceLibrary(const CaseFile& wanted, unsigned long number) {
    constexpr std::array<const char*, 4> kIncomplete = {"without-1", "without-2", "without-3", "without-4"};
    const std::string& library = wanted.Text("library");
    fs::path place;
    if (library == "loads") {
        place = m_Libraries / "without-0";
    } else if (library == "incomplete") {
        place = m_Libraries / kIncomplete[number % kIncomplete.size()];
    } else if (library == "absent") {
        place = number % 2 == 0 ? kNoLibrary : kNoElfFile;
    } else {
        throw std::runtime_error("library is unknown: " + library);
    }
    fs::remove(fs::path(kLibrarySearchFolder) / kLibraryFile);
    m_Library = place / kLibraryFile;
    if (wanted.Choice("cim", "normal", "empty")) {
        Hooks().m_CimPath = place.string();
        return;
    }
    Hooks().m_CimPath = "";
    if (fs::exists(m_Library)) {
        fs::create_symlink(m_Library, fs::path(kLibrarySearchFolder) / kLibraryFile);
    }
}

bool Surroundings::CloseLibrary() const {
    void* const left = ::dlopen(m_Library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (left == nullptr) {
        return false;
    }
    ::dlclose(left);  // the reference just taken
    ::dlclose(left);  // the one that was left
    return true;
}

void Surroundings::Clear() const {
    fs::remove_all(m_ResultFolder);
    fs::remove_all(m_OtherResultFolder);
    fs::remove_all(kRoot / "tmp");
}

Ledger::Orders Surroundings::LibraryOrders(const CaseFile& wanted) {
    Ledger::Orders orders;
    orders.isInterfaceNull = !wanted.Choice("create_lib_if", "works", "null");
    orders.convertStatus = wanted.Number("convert_status");
    orders.hasText = wanted.Choice("convert_text", "yes", "null");
    orders.nullItemAt = wanted.Number("create_null_at");
    return orders;
}

}  // namespace replay
