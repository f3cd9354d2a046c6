#include "Json.h"

namespace replay::json {

std::string Text(std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text = "\"";
    for (const char character : bytes) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20 || code >= 0x7F) {
            text.append("\\u00").append(1, kDigits[code >> 4U]).append(1, kDigits[code & 15U]);
        } else {
            text.append(character == '"' || character == '\\' ? "\\" : "").append(1, character);
        }
    }
    return text + '"';
}

std::string List(const std::vector<std::string>& values) {
    std::string list = "[";
    for (const std::string& value : values) {
        list.append(list.size() == 1 ? "" : ", ").append(value);
    }
    return list + ']';
}

std::string Texts(const std::vector<std::string>& texts) {
    std::vector<std::string> values;
    for (const std::string& text : texts) {
        values.push_back(Text(text));
    }
    return List(values);
}

void Object::Add(std::string_view name, const std::string& value) {
    m_Members.append(m_Members.empty() ? "" : ",\n ").append(Text(name)).append(": ").append(value);
}

}  // namespace replay::json
