// Runs a fuzz target over files or folders of inputs, without a fuzzer: the corpus becomes a test.

#include "Input.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsIn(const fs::path& place) {
    if (!fs::is_directory(place)) {
        return {place};
    }
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    return files;
}

bool Replay(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(in), {}};
    if (!in.good()) {
        std::fprintf(stderr, "%s cannot be read\n", file.c_str());
        return false;
    }
    // Named before it runs, since a broken property ends the process.
    std::printf("%s\n", file.filename().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    return true;
}

bool ReplayAll(const std::vector<std::string>& places) {
    std::size_t count = 0;
    for (const std::string& place : places) {
        for (const fs::path& file : InputsIn(place)) {
            if (!Replay(file)) {
                return false;
            }
            ++count;
        }
    }
    std::printf("%zu inputs replayed\n", count);
    return count > 0;
}

}  // namespace

int main(int count, char** words) {
    try {
        fuzzing::RunAllTwice();
        return ReplayAll({words + 1, words + count}) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
