#include "test_support/Processes.h"

#include "test_support/TempFolder.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

namespace testsupport {

Process Look(pid_t id) {
    const std::filesystem::path folder = "/proc/" + std::to_string(id);
    std::string stat;  // Nothing, where it ends at this moment.
    std::getline(std::ifstream(folder / "stat"), stat);
    const std::size_t open = stat.find('(');
    const std::size_t close = stat.rfind(')');
    if (close == std::string::npos) {
        return {};
    }
    Process process{.id = id, .name = stat.substr(open + 1, close - open - 1)};
    std::ifstream words(folder / "cmdline");
    for (std::string word; std::getline(words, word, '\0');) {
        process.words += word + ' ';
    }
    std::istringstream(stat.substr(close + 1)) >> process.state >> process.parent;
    return process;
}

std::vector<Process> Processes() {
    std::vector<Process> all;
    for (const std::string& name : TempFolder::NamesIn("/proc")) {
        if (std::all_of(name.begin(), name.end(),
                        [](unsigned char letter) { return std::isdigit(letter) != 0; })) {
            all.push_back(Look(std::stoi(name)));
        }
    }
    return all;
}

std::vector<Process> DescendantsOf(pid_t ancestor) {
    const std::vector<Process> all = Processes();
    std::vector<Process> found;
    std::set<pid_t> family{ancestor};
    for (bool isGrowing = true; isGrowing;) {
        isGrowing = false;
        for (const Process& process : all) {
            if (family.contains(process.parent) && family.insert(process.id).second) {
                found.push_back(process);
                isGrowing = true;
            }
        }
    }
    return found;
}

bool HasDescendant(pid_t ancestor, const std::function<bool(const Process&)>& isWanted) {
    const std::vector<Process> found = DescendantsOf(ancestor);
    return std::any_of(found.begin(), found.end(), isWanted);
}

}  // namespace testsupport
