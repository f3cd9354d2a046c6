#include "sandbox/Sandbox.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace sandbox {
namespace {

namespace fs = std::filesystem;
using basics::ErrorText;

const fs::path kToolDirectory = "/opt/zorbalt/vdk";
const fs::path kServer = kToolDirectory / "server";
const fs::path kScenario = kToolDirectory / "scenario";
const fs::path kState = kToolDirectory / "state";

constexpr const char* kRemedy =
    "; run as root, or let ordinary users have user namespaces (sysctl user.max_user_namespaces, "
    "kernel.unprivileged_userns_clone, kernel.apparmor_restrict_unprivileged_userns); in a container, "
    "start it with --cap-add SYS_ADMIN and without seccomp and AppArmor confinement";

// Only where UseScenario would otherwise change the real tool's directory.
bool g_hasScenario = false;

/// Scenarios for later, opened before the tool's directory was covered.
std::vector<std::pair<fs::path, basics::Descriptor>> g_others;

[[noreturn]] void FailKernel(const std::string& what, int error) {
    const bool isRefusal =
        error == EPERM || error == EACCES || error == ENOSPC || error == EINVAL || error == ENOSYS;
    throw SandboxError("the kernel refuses a private view of the file system: " + what + ": " +
                       ErrorText(error) + (isRefusal ? kRemedy : ""));
}

[[noreturn]] void FailPath(const std::string& what, const fs::path& path, int error) {
    throw SandboxError(what + " " + path.string() + ": " + ErrorText(error));
}

void WriteMap(const char* file, const std::string& text, bool mayBeMissing = false) {
    const basics::Descriptor map(::open(file, O_WRONLY | O_CLOEXEC));
    if (!map.IsOpen() && errno == ENOENT && mayBeMissing) {
        return;
    }
    if (!map.IsOpen() ||
        ::write(map.Number(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        FailKernel(file, errno);
    }
}

std::string OnlyItself(unsigned id) {
    const std::string text = std::to_string(id);
    return text + " " + text + " 1\n";
}

void Mount(const fs::path& source, const fs::path& target, const char* type, unsigned long flags,
           const char* data = nullptr) {
    if (::mount(source.c_str(), target.c_str(), type, flags, data) != 0) {
        FailKernel("mount on " + target.string(), errno);
    }
}

// An ordinary user gets every capability over what is his in a user namespace. Without this he could, say,
// write into a directory of his that he has made read-only, which he cannot do on the server.
void KeepOnlyMounting() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> sets{};
    sets[CAP_TO_INDEX(CAP_SYS_ADMIN)].effective = CAP_TO_MASK(CAP_SYS_ADMIN);
    sets[CAP_TO_INDEX(CAP_SYS_ADMIN)].permitted = CAP_TO_MASK(CAP_SYS_ADMIN);
    if (::syscall(SYS_capset, &header, sets.data()) != 0) {
        FailKernel("capset", errno);
    }
}

void EnterNamespace() {
    if (::unshare(CLONE_NEWNS) != 0) {
        if (errno != EPERM) {
            FailKernel("unshare", errno);
        }
        const unsigned user = ::geteuid();
        const unsigned group = ::getegid();
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            FailKernel("unshare with a user namespace", errno);
        }
        WriteMap("/proc/self/uid_map", OnlyItself(user));
        WriteMap("/proc/self/setgroups", "deny", true);  // Kernels without it need none of it.
        WriteMap("/proc/self/gid_map", OnlyItself(group));
        if (user != 0) {
            KeepOnlyMounting();
        }
    }
    // Else what is mounted here would show outside wherever mounts are shared, as they are by default.
    Mount("none", "/", nullptr, MS_REC | MS_PRIVATE);
}

// By descriptor, because the place may be covered by the time that it is needed.
basics::Descriptor OpenPlace(const std::string& what, const fs::path& path, int flags) {
    basics::Descriptor place(::open(path.c_str(), O_PATH | O_CLOEXEC | flags));
    if (!place.IsOpen()) {
        FailPath(what, path, errno);
    }
    return place;
}

fs::path PathOf(const basics::Descriptor& place) {
    return "/proc/self/fd/" + std::to_string(place.Number());
}

basics::Descriptor OpenFolder(const fs::path& directory) {
    return OpenPlace("the scenario cannot be opened:", directory, O_DIRECTORY);
}

struct OpenedScenario {
    basics::Descriptor folder;
    fs::path stage;  // The name of the scenario itself where the folder is the one above it.
};

// A stage of a timeline, which is in the folder above, takes from there what it lacks.
OpenedScenario OpenScenario(const fs::path& directory) {
    basics::Descriptor folder = OpenFolder(directory);
    const fs::path above = PathOf(folder) / "..";
    std::error_code ignored;  // What cannot be looked into has nothing to give.
    if (!fs::exists(above / "timeline", ignored)) {
        return {std::move(folder), {}};
    }
    return {OpenFolder(above), fs::read_symlink(PathOf(folder)).filename()};
}

void MakeFile(const fs::path& path) {
    constexpr mode_t kMode = 0600;
    if (!basics::Descriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode)).IsOpen()) {
        FailPath("cannot make", path, errno);
    }
}

// `source` as it was before its directory was covered, under the same name in the cover.
void BringBack(const fs::directory_entry& source, const fs::path& cover) {
    const fs::path target = cover / source.path().filename();
    if (source.is_symlink()) {
        fs::create_symlink(fs::read_symlink(source.path()), target);
    } else if (source.is_directory()) {
        fs::create_directory(target);
        Mount(source.path(), target, nullptr, MS_BIND | MS_REC);
    } else {
        MakeFile(target);
        Mount(source.path(), target, nullptr, MS_BIND);
    }
}

void Cover(const fs::path& directory) {
    Mount("tmpfs", directory, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755");
}

fs::path NearestDirectory(fs::path path) {
    std::error_code ignored;  // What cannot be asked about cannot be covered either; the directory above can.
    while (!fs::is_directory(path, ignored) && path.has_relative_path()) {
        path = path.parent_path();
    }
    return path;
}

// Leaves an empty tool directory, in memory, that nobody else sees.
void CoverToolDirectory() {
    const fs::path covered = NearestDirectory(kToolDirectory);
    if (covered == kToolDirectory) {
        Cover(covered);
        return;
    }
    if (!covered.has_relative_path()) {
        throw SandboxError("there is no /opt to cover; make that directory (an empty one will do)");
    }
    const basics::Descriptor old = OpenPlace("cannot open", covered, O_DIRECTORY);
    Cover(covered);
    const fs::path inTheWay = *kToolDirectory.lexically_relative(covered).begin();
    for (const fs::directory_entry& entry : fs::directory_iterator(PathOf(old))) {
        if (entry.path().filename() != inTheWay) {
            BringBack(entry, covered);
        }
    }
    fs::create_directories(kToolDirectory);
}

// A bind mount takes over its source's flags, and an ordinary user may not drop any of them.
unsigned long FlagsOf(const fs::path& mounted) {
    constexpr std::array<std::pair<unsigned long, unsigned long>, 6> kFlags = {
        {{ST_NOSUID, MS_NOSUID},
         {ST_NODEV, MS_NODEV},
         {ST_NOEXEC, MS_NOEXEC},
         {ST_NOATIME, MS_NOATIME},
         {ST_NODIRATIME, MS_NODIRATIME},
         {ST_RELATIME, MS_RELATIME}}};
    struct statvfs status {};
    if (::statvfs(mounted.c_str(), &status) != 0) {
        FailPath("cannot ask about", mounted, errno);
    }
    unsigned long flags = 0;
    for (const auto& [asked, set] : kFlags) {
        flags |= (status.f_flag & asked) != 0 ? set : 0;
    }
    return flags;
}

void MountScenario(const OpenedScenario& scenario) {
    Mount(PathOf(scenario.folder), kServer, nullptr, MS_BIND | MS_REC);
    Mount("none", kServer, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | FlagsOf(kServer));
    fs::create_directory_symlink(kServer.filename() / scenario.stage, kScenario);
}

void MountSimulator(const basics::Descriptor& simulator) {
    const fs::path tool = kToolDirectory / "cli" / "vdkcli";
    MakeFile(tool);
    Mount(PathOf(simulator), tool, nullptr, MS_BIND);
    if (::access(tool.c_str(), X_OK) != 0) {
        throw SandboxError("the simulator may not be run: " + ErrorText(errno) +
                           "; check its mode, and that its file system is not mounted with noexec");
    }
}

// What std::filesystem has to say names its operation and paths; as it is, it is good enough to act upon.
template <typename Work>
void WithPlainErrors(Work work) {
    try {
        work();
    } catch (const fs::filesystem_error& error) {
        throw SandboxError(std::string("the tool's directory cannot be covered: ") + error.what());
    }
}

}  // namespace

void EnterSandbox(const fs::path& simulatorFile, const fs::path& scenarioDir,
                  const std::vector<fs::path>& others) {
    WithPlainErrors([&] {
        EnterNamespace();
        // Only now: the kernel binds nothing that was opened outside.
        const basics::Descriptor simulator = OpenPlace("the simulator cannot be opened:", simulatorFile, 0);
        const OpenedScenario scenario = OpenScenario(scenarioDir);
        g_others.clear();
        for (const fs::path& other : others) {
            g_others.emplace_back(other, OpenFolder(other));
        }
        CoverToolDirectory();
        for (const char* const name : {"cli", "server", "state", "lib"}) {
            fs::create_directory(kToolDirectory / name);
        }
        MountSimulator(simulator);
        MountScenario(scenario);
        g_hasScenario = true;
    });
}

void EnterSandboxWithoutTool() {
    WithPlainErrors([] {
        EnterNamespace();
        CoverToolDirectory();
        g_hasScenario = false;
    });
}

void UseScenario(const fs::path& scenarioDir) {
    if (!g_hasScenario) {
        throw SandboxError("there is no scenario to take the place of: EnterSandbox has not been called");
    }
    WithPlainErrors([&] {
        const auto known = std::find_if(g_others.begin(), g_others.end(),
                                        [&](const auto& other) { return other.first == scenarioDir; });
        const OpenedScenario scenario =
            OpenScenario(known == g_others.end() ? scenarioDir : PathOf(known->second));
        if (::umount2(kServer.c_str(), MNT_DETACH) != 0) {
            FailKernel("umount of " + kServer.string(), errno);
        }
        fs::remove(kScenario);
        MountScenario(scenario);
        for (const fs::directory_entry& entry : fs::directory_iterator(kState)) {
            fs::remove_all(entry.path());
        }
    });
}

}  // namespace sandbox
