#include "CaseFile.h"

#include <charconv>
#include <fstream>
#include <stdexcept>

namespace replay {

CaseFile::CaseFile(const std::filesystem::path& folder) {
    std::ifstream file(folder / "case.txt", std::ios::binary);
    std::string line;
    while (std::getline(file, line)) {
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos) {
            throw std::runtime_error(folder.string() + ": not a case line: " + line);
        }
        m_Values[line.substr(0, equals)] = line.substr(equals + 1);
    }
}

const std::string& CaseFile::Text(const std::string& key) const {
    const auto found = m_Values.find(key);
    if (found == m_Values.end()) {
        throw std::runtime_error("the case lacks " + key);
    }
    return found->second;
}

std::optional<std::string> CaseFile::OptionalText(const std::string& key) const {
    const auto found = m_Values.find(key);
    return found == m_Values.end() ? std::nullopt : std::optional(found->second);
}

std::uint32_t CaseFile::Number(const std::string& key) const {
    const std::string& text = Text(key);
    std::uint32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) {
        throw std::runtime_error(key + " is no number of 32 bits: " + text);
    }
    return number;
}

bool CaseFile::Choice(const std::string& key, const std::string& yes, const std::string& no) const {
    const std::string& text = Text(key);
    if (text != yes && text != no) {
        throw std::runtime_error(key + " is neither " + yes + " nor " + no + ": " + text);
    }
    return text == yes;
}

}  // namespace replay
