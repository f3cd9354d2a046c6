#include "host/Progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <vector>

namespace host {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::size_t kUsualColumns = 80;
constexpr seconds kInterval{1};

std::size_t ColumnsOf(int terminal) noexcept {
    struct winsize size {};
    return ::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

std::vector<std::string_view> Words(std::string_view text) {
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) {
            words.push_back(text.substr(0, end));
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::string ReportName(const std::vector<std::string_view>& words) {
    const std::string_view report = words.size() > 1 ? words[1] : "";
    if (report == "-ctrlinfo") {
        return "controller data";
    }
    if (report == "-ldpdinfo") {
        return "logical drives";
    }
    if (report == "-pdinfo") {
        constexpr std::string_view kDrive = "-pd[";
        for (const std::string_view word : words) {
            if (word.starts_with(kDrive) && word.ends_with(']')) {
                return "drive " + std::string(word.substr(kDrive.size(), word.size() - kDrive.size() - 1));
            }
        }
        return "physical drives";
    }
    return report == "-v" ? "version of the tool" : "report";
}

}  // namespace

std::string DescribeCommand(std::string_view command) {
    constexpr std::string_view kController = "-a";
    const std::vector<std::string_view> words = Words(command);
    std::string text = ReportName(words);
    if (words.size() > 1 && words.back() == "-aAll") {
        text = "all controllers: " + text;
    } else if (words.size() > 1 && words.back().starts_with(kController)) {
        text = "controller " + std::string(words.back().substr(kController.size())) + ": " + text;
    }
    text.append(" (").append(command).append(")");
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character < ' ' || character > '~'; }, '?');
    return text;
}

std::string ProgressLine(const ProgressState& state, std::size_t columns) {
    const std::size_t room =
        columns > 0 ? columns - 1 : 0;  // In the last column some terminals wrap already.
    std::string time = " " + std::to_string(state.elapsed.count()) + " s";
    if (state.inAll != state.elapsed) {
        time += ", " + std::to_string(state.inAll.count()) + " s in all";
    }
    std::string text = DescribeCommand(state.command);
    if (state.total > 0) {
        text = std::to_string(state.done) + " of " + std::to_string(state.total) + " done, " + text;
    }
    if (text.size() + time.size() > room && room > time.size()) {
        text.resize(room - time.size());
    }
    text += time;
    text.resize(std::min(text.size(), room));
    return text;
}

Progress::Progress(int terminal)
    : m_Terminal(terminal), m_Thread([this](const std::stop_token& stop) { Run(stop); }) {}

Progress::~Progress() = default;

void Progress::Show(std::string_view command) {
    {
        const std::lock_guard lock(m_Mutex);
        m_Command = command;
        m_Since = steady_clock::now();
        m_IsNew = true;
    }
    m_Changed.notify_one();
}

void Progress::ShowDone(std::size_t done, std::size_t total) {
    const std::lock_guard lock(m_Mutex);
    m_Done = done;
    m_Total = total;
}

// Draws without the lock, so that a terminal that has been stopped holds up nobody but this thread.
void Progress::Run(const std::stop_token& stop) {
    std::unique_lock lock(m_Mutex);
    while (!stop.stop_requested()) {
        m_Changed.wait_for(lock, stop, kInterval, [this] { return m_IsNew; });
        m_IsNew = false;
        if (m_Command.empty() || stop.stop_requested()) {
            continue;
        }
        const auto now = steady_clock::now();
        const ProgressState state{.command = m_Command,
                                  .elapsed = std::chrono::duration_cast<seconds>(now - m_Since),
                                  .done = m_Done,
                                  .total = m_Total,
                                  .inAll = std::chrono::duration_cast<seconds>(now - m_Start)};
        lock.unlock();
        Draw(ProgressLine(state, ColumnsOf(m_Terminal)));
        lock.lock();
    }
    lock.unlock();
    if (m_Drawn > 0) {
        Draw("");
    }
}

// Blanks instead of control sequences: every terminal knows them.
void Progress::Draw(const std::string& line) {
    // A terminal that has become narrower has no room for the rest of a longer line.
    const std::size_t room = ColumnsOf(m_Terminal) - 1;
    const std::size_t rest =
        std::min(m_Drawn, room) > line.size() ? std::min(m_Drawn, room) - line.size() : 0;
    std::string text = "\r" + line + std::string(rest, ' ');
    if (rest > 0) {
        text += "\r" + line;
    }
    std::string_view left = text;
    while (!left.empty()) {
        const ssize_t written = ::write(m_Terminal, left.data(), left.size());
        if (written < 0 && errno != EINTR) {
            break;  // A terminal that is gone shows no progress.
        }
        left.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    m_Drawn = line.size();
}

}  // namespace host
