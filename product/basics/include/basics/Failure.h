#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace basics {

/// What ends the work early: one line for whoever asked for it, without the program's name, and what kind of
/// thing failed.
class Failure final : public std::runtime_error {
  public:
    enum class Kind {
        Method,        ///< the method ended with a return value other than 0
        Call,          ///< the call itself failed: a WBEM status other than 0, or no result
        Use,           ///< what is asked for cannot be understood
        Surroundings,  ///< what the work needs around it is missing or refuses
    };

    Failure(Kind kind, const std::string& line) : std::runtime_error(line), m_Kind(kind) {}
    [[nodiscard]] Kind WhatKind() const noexcept { return m_Kind; }

  private:
    Kind m_Kind;
};

[[noreturn]] inline void FailSurroundings(const std::string& line) {
    throw Failure(Failure::Kind::Surroundings, line);
}

/// The system's words for an `errno`.
[[nodiscard]] inline std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

}  // namespace basics
