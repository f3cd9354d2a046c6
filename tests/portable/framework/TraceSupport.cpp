#include "TraceSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>

namespace qel::test {

namespace {

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char character : text) {
        if (character == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += character;
        }
    }
    return pieces;
}

}  // namespace

std::vector<WrittenLine> ParseTrace(const std::string& contents) {
    std::vector<std::string> lines = Split(contents, '\n');
    EXPECT_EQ(lines.back(), "") << "the last line does not end";
    lines.pop_back();
    std::vector<WrittenLine> parsed;
    for (const std::string& line : lines) {
        const std::vector<std::string> fields = Split(line, '\t');
        EXPECT_EQ(fields.size(), 5U) << line;
        if (fields.size() == 5) {
            parsed.push_back({fields[0], fields[1], fields[2], fields[3], fields[4]});
        }
    }
    return parsed;
}

TraceFile::TraceFile(unsigned levels) {
    if (!CTraceOutput::OpenFile(Path())) {
        throw std::runtime_error(std::string("no trace file: ") + std::strerror(errno));
    }
    CTraceOutput::SetLevels(levels);
}

TraceFile::~TraceFile() {
    CTraceOutput::SetLevels(0);
    CTraceOutput::UseStandardError();
}

void RememberingListener::OnTrace(const TraceLine& line) noexcept {
    const std::lock_guard lock(m_Mutex);
    m_Lines.push_back({std::string(line.category), line.level, std::string(line.text)});
}

std::vector<RememberingListener::Heard> RememberingListener::Lines() const {
    const std::lock_guard lock(m_Mutex);
    return m_Lines;
}

}  // namespace qel::test
