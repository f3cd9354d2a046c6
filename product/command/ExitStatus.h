#pragma once

#include "basics/Failure.h"

namespace command {

/// How the command ends; `--help` shows the same list.
enum class ExitStatus : int {
    Success = 0,
    MethodFailed = 1,
    WrongUse = 2,
    CallFailed = 3,
    Surroundings = 4,
};

[[nodiscard]] constexpr ExitStatus ExitStatusOf(basics::Failure::Kind kind) {
    switch (kind) {
        case basics::Failure::Kind::Method:
            return ExitStatus::MethodFailed;
        case basics::Failure::Kind::Use:
            return ExitStatus::WrongUse;
        case basics::Failure::Kind::Call:
            return ExitStatus::CallFailed;
        case basics::Failure::Kind::Surroundings:
            break;
    }
    return ExitStatus::Surroundings;
}

}  // namespace command
