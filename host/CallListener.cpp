#include "host/CallListener.h"

#include <new>
#include <string_view>

namespace host {
namespace {

constexpr std::string_view kFailureMessage = "MSGID_MNGSRV_RAID_0001_F ";
constexpr std::string_view kCommandStart = "execute vdkcli command.(";
constexpr char kCommandEnd = ')';

constexpr int kMessageLevel = 0;
constexpr int kResultLevel = 1;

}  // namespace

void CallListener::OnTrace(const TraceLine& line) noexcept {
    try {
        Hear(line);
    } catch (...) {
        return;  // Without memory there are neither reasons nor progress, and the call goes on.
    }
}

void CallListener::Hear(const TraceLine& line) {
    if (line.level == kMessageLevel && line.text.starts_with(kFailureMessage)) {
        const std::lock_guard lock(m_Mutex);
        m_Reasons = line.text.substr(kFailureMessage.size());
    } else if (m_Progress != nullptr && line.level == kResultLevel && line.text.starts_with(kCommandStart) &&
               line.text.ends_with(kCommandEnd)) {
        std::string_view command = line.text.substr(kCommandStart.size());
        command.remove_suffix(1);
        m_Progress->Show(command);
    }
}

std::optional<std::string> CallListener::Reasons() const {
    const std::lock_guard lock(m_Mutex);
    return m_Reasons;
}

}  // namespace host
