#include "test_support/InChild.h"

#include "test_support/TempFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <exception>

namespace testsupport {

std::string InChild(const std::function<std::string()>& work) {
    const TempFolder folder;
    const std::string result = folder / "result";
    WriteFile(result, "the child was lost");
    // Opened here, because the child may cover the place.
    const int file = ::open(result.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    const pid_t child = ::fork();
    if (child == 0) {
        std::string text;
        try {
            text = work();
        } catch (const std::exception& error) {
            text = std::string("threw: ") + error.what();
        }
        ::_exit(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    ::close(file);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    return ReadFile(result);
}

}  // namespace testsupport
