#include "Progress.h"

#include "Screen.h"
#include "basics/Descriptor.h"
#include "calls/ToolCommand.h"

#include <algorithm>

namespace command {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr seconds kInterval{1};

}  // namespace

std::string ProgressLine(const ProgressState& state, std::size_t columns) {
    const std::size_t room =
        columns > 0 ? columns - 1 : 0;  // In the last column some terminals wrap already.
    std::string time = " " + std::to_string(state.elapsed.count()) + " s";
    if (state.inAll != state.elapsed) {
        time += ", " + std::to_string(state.inAll.count()) + " s in all";
    }
    std::string text = calls::DescribeCommand(state.command);
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
    (void)basics::WriteWhole(m_Terminal, text);  // A terminal that is gone shows no progress.
    m_Drawn = line.size();
}

}  // namespace command
