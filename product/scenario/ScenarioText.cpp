#include "scenario/ScenarioText.h"

#include "basics/Signal.h"
#include "basics/Words.h"

#include <string.h>
#include <sys/wait.h>

#include <algorithm>

namespace scenario {
namespace {

bool IsGood(int status) {
    return status == 0;
}

// What a shell that waits would have said.
int ExitStatusLike(int status) {
    if (WIFSIGNALED(status)) {
        return basics::kSignalStatusBase + WTERMSIG(status);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

std::string SteadyFailure(int status) {
    if (WIFSTOPPED(status)) {
        return "stop\n";
    }
    if (WIFSIGNALED(status)) {
        const char* const name = ::sigabbrev_np(WTERMSIG(status));
        return name == nullptr ? "exit " + std::to_string(ExitStatusLike(status)) + "\n"
                               : "signal " + std::string(name) + " shell\n";
    }
    return "exit " + std::to_string(WEXITSTATUS(status)) + "\n";
}

}  // namespace

std::string ScenarioStem(std::string_view arguments) {
    std::string stem;
    bool isWordStart = true;
    for (const char character : arguments) {
        if (character == ' ') {
            isWordStart = true;
            continue;
        }
        if (character == '[' || character == ']' || (isWordStart && character == '-')) {
            continue;
        }
        if (isWordStart && !stem.empty()) {
            stem += '_';
        }
        isWordStart = false;
        stem += character == ':'                                          ? '.'
                : (basics::IsAlphanumeric(character) || character == '-') ? character
                                                                          : '_';
    }
    return stem;
}

std::optional<std::string> ScenarioInstructions(const std::vector<int>& statuses) {
    const auto firstFailure = std::find_if_not(statuses.begin(), statuses.end(), IsGood);
    if (firstFailure == statuses.end()) {
        return "";
    }
    const int last = statuses.back();
    const auto steady =
        std::find_if(statuses.rbegin(), statuses.rend(), [&](int status) { return status != last; }).base();
    std::string text;
    if (firstFailure != statuses.begin()) {
        text += "pass-first " + std::to_string(firstFailure - statuses.begin()) + "\n";
    }
    if (firstFailure < steady) {
        if (std::any_of(firstFailure, steady, IsGood)) {
            return std::nullopt;
        }
        text += "fail-first " + std::to_string(steady - firstFailure) + " " +
                std::to_string(ExitStatusLike(*firstFailure)) + "\n";
    }
    return IsGood(last) ? text : text + SteadyFailure(last);
}

}  // namespace scenario
