#pragma once

#include <stdexcept>
#include <string>

namespace host {

/// How the command ends; `--help` shows the same list.
enum class ExitStatus : int {
    Success = 0,
    MethodFailed = 1,  ///< the method ended with a return value other than 0
    WrongUse = 2,      ///< the command line cannot be understood
    StatusFailed = 3,  ///< the call itself failed: a WBEM status other than 0, or no result
    Surroundings = 4,  ///< what the command needs around it is missing or refuses
};

/// What ends the command early: one line for standard error, without the command's name, and the exit status.
class HostError final : public std::runtime_error {
  public:
    HostError(ExitStatus status, const std::string& line) : std::runtime_error(line), m_Status(status) {}
    [[nodiscard]] ExitStatus Status() const noexcept { return m_Status; }

  private:
    ExitStatus m_Status;
};

}  // namespace host
