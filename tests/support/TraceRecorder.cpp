#include "test_support/TraceRecorder.h"

#include <new>

namespace testsupport {

void TraceRecorder::OnTrace(const TraceLine& line) noexcept {
    const bool isWanted = line.level == 0 || (m_Levels & static_cast<unsigned>(line.level)) != 0;
    if (line.category == "msraid" && isWanted) {
        const std::lock_guard lock(m_Mutex);
        try {
            Keep(line);
        } catch (const std::bad_alloc&) {
            m_Reserve.reset();
            Keep(line);
        }
    }
}

void TraceRecorder::Keep(const TraceLine& line) {
    m_Lines.push_back(std::to_string(line.level) + " " + std::string(line.text));
}

std::vector<std::string> TraceRecorder::Lines() const {
    const std::lock_guard lock(m_Mutex);
    return m_Lines;
}

std::vector<std::string> TraceRecorder::Texts(int level) const {
    const std::string prefix = std::to_string(level) + " ";
    std::vector<std::string> texts;
    for (const std::string& line : Lines()) {
        if (line.starts_with(prefix)) {
            texts.push_back(line.substr(prefix.size()));
        }
    }
    return texts;
}

void TraceRecorder::Clear() {
    const std::lock_guard lock(m_Mutex);
    m_Lines.clear();
}

}  // namespace testsupport
