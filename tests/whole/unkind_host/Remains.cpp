#include "Remains.h"

#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>

namespace unkindhost {

std::set<int> OpenDescriptors() {
    constexpr int kHighest = 4096;  // above every number that a test opens
    std::set<int> numbers;
    for (int number = 0; number < kHighest; ++number) {
        if (::fcntl(number, F_GETFD) != -1) {
            numbers.insert(number);
        }
    }
    return numbers;
}

bool IsMapped(const std::string& fileName) {
    return testsupport::ReadFile("/proc/self/maps").find("/" + fileName) != std::string::npos;
}

std::string Remains(const std::set<int>& before, const std::filesystem::path& installRoot) {
    std::string text;
    for (const int number : OpenDescriptors()) {
        if (before.count(number) == 0) {
            text += "\nleft: descriptor " + std::to_string(number);
        }
    }
    if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) {
        text += "\nleft: a child";
    }
    for (const std::string& name : testsupport::TempFolder::NamesIn(installRoot / "tmp" / "MSRAID")) {
        text += "\nleft: result file " + name;
    }
    if (IsMapped("libqel_MngSrv_QelLib.so")) {
        text += "\nleft: the conversion library";
    }
    return text;
}

}  // namespace unkindhost
