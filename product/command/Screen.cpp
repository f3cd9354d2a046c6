#include "Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace command {
namespace {

std::string_view Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::size_t ColumnsOfStandardOutput() {
    const std::string_view wish = Environment("COLUMNS");
    std::size_t columns = 0;
    const auto read = std::from_chars(wish.data(), wish.data() + wish.size(), columns);
    if (read.ec == std::errc() && read.ptr == wish.data() + wish.size() && columns > 0) {
        return columns;
    }
    return ColumnsOf(STDOUT_FILENO);
}

}  // namespace

std::size_t ColumnsOf(int terminal) noexcept {
    constexpr std::size_t kUsual = 80;
    struct winsize size {};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

views::TerminalStyle StyleOfStandardOutput() {
    if (::isatty(STDOUT_FILENO) != 1) {
        return {};
    }
    const bool hasColors = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
    return {ColumnsOfStandardOutput(), hasColors};
}

}  // namespace command
