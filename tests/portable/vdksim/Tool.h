#pragma once

#include "test_support/TempFolder.h"

#include <sys/types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vdksim::test {

using testsupport::ReadFile;
using testsupport::TempFolder;

struct Ended {
    int status = 0;  // as waitpid() tells it
    std::string out;
    std::string err;

    [[nodiscard]] int ExitStatus() const;  // -1 when it did not exit
    [[nodiscard]] int Signal() const;      // 0 when no signal ended it
};

// The simulator as a child process on one scenario; without a state folder unless one is set.
class Tool final {
  public:
    explicit Tool(std::filesystem::path scenario) : m_Scenario(std::move(scenario)) {}

    Tool& WithState(const std::filesystem::path& folder);
    Tool& WithProgram(const std::filesystem::path& program);
    // Leaves the variables out, so that the program finds its folders by itself.
    Tool& WithoutVariables();

    // Runs to the end. The arguments are separated by blanks.
    [[nodiscard]] Ended Run(const std::string& arguments) const;
    // Starts it with this descriptor as standard output; the caller waits for it.
    [[nodiscard]] pid_t Start(const std::string& arguments, int output, int error) const;

  private:
    std::filesystem::path m_Program = VDKSIM_TEST_PROGRAM;
    std::filesystem::path m_Scenario;
    std::optional<std::filesystem::path> m_State;
    bool m_SetVariables = true;
};

}  // namespace vdksim::test
