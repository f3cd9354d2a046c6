#pragma once

#include <stdexcept>
#include <string>

namespace vdksim {

// What the simulator ends with where no instruction says otherwise. The values from 64 up are its own
// complaints: the scenario is at fault or cannot be played, and the tool that it stands for is not to blame.
enum ExitStatus : int {
    kExitGood = 0,
    kExitRejected = 1,       // the command line, or an instruction to fail
    kExitNotPresent = 2,     // a controller or drive that the server does not have
    kExitBadScenario = 65,   // a line of an instruction file or of server.conf cannot be understood
    kExitNoScenario = 66,    // the scenario folder or a file that it must have is missing
    kExitNoState = 73,       // the state folder is needed and is missing, or cannot be written
    kExitOutputFailed = 74,  // the report could not be written
};

// A scenario that cannot be played. what() is one line for the person who wrote it, as in
// "small/any.do:3: unknown instruction 'exti'". Only main() catches it.
class ScenarioError final : public std::runtime_error {
  public:
    ScenarioError(ExitStatus status, const std::string& text) : std::runtime_error(text), m_Status(status) {}

    [[nodiscard]] ExitStatus Status() const noexcept { return m_Status; }

  private:
    ExitStatus m_Status;
};

}  // namespace vdksim
