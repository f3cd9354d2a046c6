#include "Support.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

namespace qel::test {

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
