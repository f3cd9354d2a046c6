#include "tests/framework/Support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

namespace qel::test {

TempFolder::TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "framework_test_XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    m_Path = std::filesystem::canonical(name);
}

TempFolder::~TempFolder() {
    std::error_code ignored;  // What cannot be removed is left to the system's own tidying.
    std::filesystem::remove_all(m_Path, ignored);
}

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : m_Name(std::move(name)) {
    if (const char* const before = std::getenv(m_Name.c_str())) {
        m_Before = before;
    }
    if (value) {
        ::setenv(m_Name.c_str(), value->c_str(), 1);
    } else {
        ::unsetenv(m_Name.c_str());
    }
}

ScopedVariable::~ScopedVariable() {
    if (m_Before) {
        ::setenv(m_Name.c_str(), m_Before->c_str(), 1);
    } else {
        ::unsetenv(m_Name.c_str());
    }
}

ScopedStandardError::ScopedStandardError(int target) : m_Before(::dup(STDERR_FILENO)) {
    ::dup2(target, STDERR_FILENO);
}

ScopedStandardError::~ScopedStandardError() {
    ::dup2(m_Before, STDERR_FILENO);
    ::close(m_Before);
}

std::string ReadFile(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& path, const std::string& contents) {
    std::ofstream stream(path, std::ios::binary);
    if (!stream.write(contents.data(), static_cast<std::streamsize>(contents.size())).flush()) {
        throw std::runtime_error("cannot write " + path);
    }
}

int RunInChild(const std::function<int()>& body) {
    const pid_t child = ::fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        int status = 255;
        try {
            status = body();
        } catch (...) {  // The status tells; nothing of the test runner may run in the child.
        }
        ::_exit(status);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace qel::test
