#include "Screen.h"

#include "basics/Words.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace command {
namespace {

std::string_view Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::size_t ColumnsOfStandardOutput() {
    const std::size_t wish = basics::NumberFrom<std::size_t>(Environment("COLUMNS")).value_or(0);
    return wish > 0 ? wish : ColumnsOf(STDOUT_FILENO);
}

}  // namespace

std::size_t ColumnsOf(int terminal) noexcept {
    constexpr std::size_t kUsualColumns = 80;
    struct winsize size {};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

views::TerminalStyle StyleOfStandardOutput() {
    if (::isatty(STDOUT_FILENO) != 1) {
        return {};
    }
    const bool hasColors = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
    return {ColumnsOfStandardOutput(), hasColors};
}

}  // namespace command
