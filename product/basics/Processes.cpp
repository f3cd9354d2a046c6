#include "basics/Processes.h"

#include "basics/Words.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <unordered_map>

namespace basics {
namespace {

namespace fs = std::filesystem;

using Families = std::unordered_map<pid_t, std::vector<pid_t>>;  ///< children by parent

struct Kin {
    char state = 0;
    pid_t parent = 0, group = 0, session = 0;
};

// From "4711 (a name) S 4710 ...": the name may hold anything, so what follows counts from its last bracket.
Kin KinOf(const fs::path& process) {
    std::ifstream file(process / "stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')');
    std::istringstream rest(name == std::string::npos ? "" : line.substr(name + 1));
    Kin kin;
    rest >> kin.state >> kin.parent >> kin.group >> kin.session;
    return kin;
}

template <typename See>
void ForEachProcess(const See& see) {
    std::error_code error;
    for (fs::directory_iterator at("/proc", error), end; !error && at != end; at.increment(error)) {
        if (const auto process = NumberFrom<pid_t>(at->path().filename().string())) {
            see(*process, KinOf(at->path()));
        }
    }
}

Families AllFamilies() {
    Families families;
    ForEachProcess([&families](pid_t process, const Kin& kin) { families[kin.parent].push_back(process); });
    return families;
}

}  // namespace

// The C library's own is not declared for C++ everywhere.
Descriptor OpenProcess(pid_t process) noexcept {
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

std::vector<pid_t> ChildrenOf(pid_t parent) {
    return AllFamilies()[parent];
}

std::vector<pid_t> MembersOf(pid_t session) {
    std::vector<pid_t> members;
    ForEachProcess([&](pid_t process, const Kin& kin) {
        if (kin.session == session && kin.state != 'Z') {
            members.push_back(process);
        }
    });
    return members;
}

std::vector<pid_t> DescendantsOf(pid_t ancestor) {
    Families families = AllFamilies();
    std::vector<pid_t> found = families[ancestor];
    for (std::size_t number = 0; number < found.size(); ++number) {
        const std::vector<pid_t> children = std::move(families[found[number]]);
        found.insert(found.end(), children.begin(), children.end());
    }
    return found;
}

}  // namespace basics
