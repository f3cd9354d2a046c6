#include "ChildEnvironment.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace {

constexpr const char* kName = "LD_LIBRARY_PATH";
constexpr std::string_view kPrefix = "LD_LIBRARY_PATH=";

}  // namespace

ChildEnvironment::ChildEnvironment(const std::string& libraryDirectory) : m_LibraryPath(kPrefix) {
    // Meant: a variable that is set but empty gives an empty first directory.
    if (const char* const old = std::getenv(kName)) {
        m_LibraryPath.append(old).append(":");
    }
    m_LibraryPath += libraryDirectory;

    bool isReplaced = false;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const bool isOurs = !isReplaced && std::string_view(*entry).starts_with(kPrefix);
        m_Entries.push_back(isOurs ? m_LibraryPath.data() : *entry);
        isReplaced |= isOurs;
    }
    if (!isReplaced) {
        m_Entries.push_back(m_LibraryPath.data());
    }
    m_Entries.push_back(nullptr);
}
