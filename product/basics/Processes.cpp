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

// From "4711 (a name) S 4710 ...": the name may hold anything, so what follows counts from its last bracket.
pid_t ParentOf(const fs::path& process) {
    std::ifstream file(process / "stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')');
    std::istringstream rest(name == std::string::npos ? "" : line.substr(name + 1));
    char state = 0;
    pid_t parent = 0;
    rest >> state >> parent;
    return parent;
}

Families AllFamilies() {
    Families families;
    std::error_code error;
    for (fs::directory_iterator at("/proc", error), end; !error && at != end; at.increment(error)) {
        if (const auto process = NumberFrom<pid_t>(at->path().filename().string())) {
            families[ParentOf(at->path())].push_back(*process);
        }
    }
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
