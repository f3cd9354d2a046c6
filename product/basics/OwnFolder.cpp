#include "basics/OwnFolder.h"

#include <system_error>

namespace basics {
namespace {

std::filesystem::path FindOwnFolder() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

const std::filesystem::path g_ownFolder = FindOwnFolder();

}  // namespace

const std::filesystem::path& OwnFolder() noexcept {
    return g_ownFolder;
}

}  // namespace basics
