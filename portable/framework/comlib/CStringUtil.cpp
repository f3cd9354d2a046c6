#include "qel/CStringUtil.h"

#include <charconv>
#include <limits>

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

}  // namespace

std::string CStringUtil::NumberToTString(long number) {
    return std::to_string(number);
}

long CStringUtil::TStringToNumber(const std::string& text) {
    std::size_t start = text.find_first_not_of(kWhiteSpace);
    if (start == std::string::npos) {
        return 0;
    }
    const bool isNegative = text[start] == '-';
    // from_chars takes a minus but no plus, and of "+-1" nothing may be read.
    if (text[start] == '+') {
        ++start;
        if (start < text.size() && text[start] == '-') {
            return 0;
        }
    }
    long number = 0;
    const auto read = std::from_chars(text.data() + start, text.data() + text.size(), number);
    if (read.ec == std::errc::result_out_of_range) {
        return isNegative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
    }
    return number;
}

std::string CStringUtil::StringToTstring(const char* text) {
    return text == nullptr ? "" : text;
}

void CStringUtil::SplitByDot(const std::string& text, std::vector<std::string>& parts) {
    parts.clear();
    std::size_t start = 0;
    for (std::size_t dot = text.find('.'); dot != std::string::npos; dot = text.find('.', start)) {
        parts.push_back(text.substr(start, dot - start));
        start = dot + 1;
    }
    parts.push_back(text.substr(start));
}

void CStringUtil::strReplace(std::string& text, const std::string& from, const std::string& to) {
    if (from.empty()) {
        return;
    }
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}
