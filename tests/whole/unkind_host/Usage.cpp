#include "Usage.h"

#include "test_support/TempFolder.h"

#include <malloc.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

namespace fs = std::filesystem;

namespace unkindhost {
namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kMeasuresMemory = false;  // It never gives memory back.
#else
constexpr bool kMeasuresMemory = true;
#endif

constexpr std::size_t kResidentAllowance = 512;  // KiB
constexpr std::size_t kHeapAllowance = 4096;     // bytes

std::size_t CountEntries(const fs::path& folder) {
    std::error_code missing;  // A folder that is not there has none.
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder, missing), {}));
}

std::size_t CountWords(const std::string& text) {
    std::istringstream words(text);
    return static_cast<std::size_t>(
        std::distance(std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()));
}

// The number in a line such as "VmRSS:	    5120 kB".
std::size_t NumberInStatus(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key + ":")) {
            return std::stoul(line.substr(key.size() + 1));
        }
    }
    return 0;
}

std::size_t CountMappedFiles() {
    std::ifstream maps("/proc/self/maps");
    std::set<std::string> files;
    for (std::string line; std::getline(maps, line);) {
        const std::size_t path = line.find('/');
        if (path != std::string::npos) {
            files.insert(line.substr(path));
        }
    }
    return files.size();
}

std::string Line(const char* what, std::size_t before, std::size_t now, std::size_t allowance = 0) {
    if (now <= before + allowance) {
        return "";
    }
    return std::string(what) + " grew from " + std::to_string(before) + " to " + std::to_string(now) + "\n";
}

}  // namespace

Usage Usage::Now(const fs::path& installRoot) {
    Usage now;
    if (kMeasuresMemory) {
        const struct mallinfo2 heap = ::mallinfo2();
        now.heap = heap.uordblks + heap.hblkhd;
    }
    now.descriptors = CountEntries("/proc/self/fd");
    now.children = CountWords(testsupport::ReadFile("/proc/thread-self/children"));
    now.threads = NumberInStatus("Threads");
    now.libraries = CountMappedFiles();
    now.resultFiles = CountEntries(installRoot / "tmp" / "MSRAID");
    now.resident = NumberInStatus("VmRSS");
    return now;
}

std::string Usage::GrowthSince(const Usage& before) const {
    const std::string memory =
        kMeasuresMemory ? Line("resident memory (KiB)", before.resident, resident, kResidentAllowance) +
                              Line("heap (bytes)", before.heap, heap, kHeapAllowance)
                        : "";
    return memory + Line("descriptors", before.descriptors, descriptors) +
           Line("children", before.children, children) + Line("threads", before.threads, threads) +
           Line("mapped files", before.libraries, libraries) +
           Line("result files", before.resultFiles, resultFiles);
}

}  // namespace unkindhost
