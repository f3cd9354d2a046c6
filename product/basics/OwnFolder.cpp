#include "basics/OwnFolder.h"

#include "basics/Failure.h"

#include <system_error>

namespace basics {
namespace {

std::filesystem::path FindOwnFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

const std::filesystem::path g_ownFolder = FindOwnFolder();

}  // namespace

const std::filesystem::path& OwnFolder() {
    if (g_ownFolder.empty()) {
        FailSurroundings("where this program lies cannot be found; /proc has to be there");
    }
    return g_ownFolder;
}

}  // namespace basics
