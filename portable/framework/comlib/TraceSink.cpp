#include "comlib/TraceSink.h"

#include "qel/QelWindows.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace qel {

std::atomic<unsigned> g_wantedLevels{0};

namespace {

std::atomic<unsigned> g_levels{0};
std::atomic<int> g_descriptor{STDERR_FILENO};
std::atomic<ITraceListener*> g_listener{nullptr};
std::atomic<unsigned> g_heardLevels{0};

void UpdateWantedLevels() noexcept {
    g_wantedLevels.store(g_levels.load() | (g_listener.load() == nullptr ? 0 : g_heardLevels.load()));
}

// A child process has copies of the listener's locks, perhaps taken by threads that it does not have. And it
// may put something else in the place of its standard error before it is through with tracing, so it keeps
// that aside.
void PrepareChild() {
    g_listener.store(nullptr, std::memory_order_relaxed);
    UpdateWantedLevels();
    if (g_levels.load(std::memory_order_relaxed) != 0 &&
        g_descriptor.load(std::memory_order_relaxed) == STDERR_FILENO) {
        const int aside = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (aside >= 0) {
            g_descriptor.store(aside, std::memory_order_relaxed);
        }
    }
}
[[maybe_unused]] const int g_atForkResult = pthread_atfork(nullptr, nullptr, PrepareChild);

bool IsOn(const std::atomic<unsigned>& wanted, int level) noexcept {
    const unsigned levels = wanted.load(std::memory_order_relaxed);
    return level == 0 ? levels != 0 : (levels & static_cast<unsigned>(level)) != 0;
}

// A text of fixed size on the stack, as long as it fits, then one in memory.
class LineBuffer final {
  public:
    void Append(std::string_view text) {
        if (m_Large.empty() && m_Size + text.size() <= m_Usual.size()) {
            std::memcpy(m_Usual.data() + m_Size, text.data(), text.size());
            m_Size += text.size();
            return;
        }
        if (m_Large.empty()) {
            m_Large.reserve(2 * (m_Size + text.size()));
            m_Large.assign(m_Usual.data(), m_Size);
        }
        m_Large.append(text);
    }
    [[nodiscard]] std::string_view View() const {
        return m_Large.empty() ? std::string_view(m_Usual.data(), m_Size) : std::string_view(m_Large);
    }

  private:
    std::array<char, 1024> m_Usual;
    std::size_t m_Size = 0;
    std::string m_Large;
};

void AppendEscaped(LineBuffer& buffer, char control) {
    switch (control) {
        case '\\':
            return buffer.Append("\\\\");
        case '\n':
            return buffer.Append("\\n");
        case '\r':
            return buffer.Append("\\r");
        case '\t':
            return buffer.Append("\\t");
        default:
            break;
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(control);
    const char escaped[] = {'\\', 'x', kDigits[code >> 4U], kDigits[code & 15U]};
    buffer.Append({escaped, sizeof escaped});
}

bool NeedsEscape(char character) {
    const auto code = static_cast<unsigned char>(character);
    return code < 0x20 || code == 0x7F || character == '\\';
}

void AppendText(LineBuffer& buffer, std::string_view text) {
    std::size_t plainFrom = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (NeedsEscape(text[at])) {
            buffer.Append(text.substr(plainFrom, at - plainFrom));
            AppendEscaped(buffer, text[at]);
            plainFrom = at + 1;
        }
    }
    buffer.Append(text.substr(plainFrom));
}

// Calendar arithmetic of its own: the C library's takes a lock, which a forked child may find taken for ever.
void AppendTime(LineBuffer& buffer) {
    using namespace std::chrono;
    const auto now = time_point_cast<microseconds>(system_clock::now());
    const auto day = floor<days>(now);
    const year_month_day date{day};
    const hh_mm_ss time{now - day};
    char text[48];
    const int length =
        std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ", static_cast<int>(date.year()),
                      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                      static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                      static_cast<int>(time.seconds().count()), static_cast<int>(time.subseconds().count()));
    buffer.Append({text, static_cast<std::size_t>(length)});
}

void WriteWhole(std::string_view line) noexcept {
    while (!line.empty()) {
        const ssize_t written =
            ::write(g_descriptor.load(std::memory_order_relaxed), line.data(), line.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return;  // A trace that cannot be written has nobody to be reported to.
        }
        line.remove_prefix(static_cast<std::size_t>(written));
    }
}

void WriteLine(const TraceLine& line) noexcept {
    try {
        LineBuffer buffer;
        AppendTime(buffer);
        char thread[32];
        std::snprintf(thread, sizeof thread, "\t%lu\t", GetCurrentThreadId());
        buffer.Append(thread);
        AppendText(buffer, line.category);
        const char level[] = {'\t', static_cast<char>('0' + line.level), '\t'};
        buffer.Append({level, sizeof level});
        AppendText(buffer, line.text);
        buffer.Append("\n");
        WriteWhole(buffer.View());
    } catch (const std::bad_alloc&) {
        WriteWhole("-\t-\tqel\t2\ta trace line was lost: out of memory\n");
    }
}

}  // namespace

void EmitTrace(const TraceLine& line) noexcept {
    ITraceListener* const listener = g_listener.load(std::memory_order_acquire);
    if (listener != nullptr && IsOn(g_heardLevels, line.level)) {
        listener->OnTrace(line);
    }
    if (IsOn(g_levels, line.level)) {
        WriteLine(line);
    }
}

}  // namespace qel

void CTraceOutput::SetLevels(unsigned levels) noexcept {
    qel::g_levels.store(levels & ALL_LEVELS);
    qel::UpdateWantedLevels();
}

void CTraceOutput::UseStandardError() noexcept {
    const int old = qel::g_descriptor.exchange(STDERR_FILENO);
    if (old != STDERR_FILENO) {
        ::close(old);
    }
}

bool CTraceOutput::OpenFile(const std::string& path) noexcept {
    constexpr mode_t kModeBeforeUmask = 0666;
    const int descriptor =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, kModeBeforeUmask);
    if (descriptor < 0) {
        return false;
    }
    UseStandardError();
    qel::g_descriptor.store(descriptor);
    return true;
}

void CTraceOutput::SetListener(ITraceListener* listener, unsigned levels) noexcept {
    qel::g_heardLevels.store(levels & ALL_LEVELS);
    qel::g_listener.store(listener, std::memory_order_release);
    qel::UpdateWantedLevels();
}
