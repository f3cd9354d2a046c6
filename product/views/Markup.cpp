#include "Markup.h"

#include "basics/Text.h"

#include <algorithm>

namespace views {
namespace {

constexpr std::size_t kMaxWidth = 300;
constexpr std::string_view kInline[] = {"a", "b", "code", "small", "span", "td", "th", "time"};

void AppendEscaped(std::string_view text, std::string& escaped) {
    for (const char character : basics::Shortened(basics::Printable(text), kMaxWidth)) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += character;
        }
    }
}

}  // namespace

Markup& Markup::Text(std::string_view text) {
    AppendEscaped(text, m_Text);
    return *this;
}

Markup& Markup::Own(std::string_view markup) {
    m_Text += markup;
    return *this;
}

Markup& Markup::Element(std::string_view tag, std::string_view text, Attributes attributes) {
    return In(tag, attributes, [&] { Text(text); });
}

void Markup::Open(std::string_view tag, Attributes attributes) {
    m_Text.append("<").append(tag);
    for (const auto& [name, value] : attributes) {
        if (!value.empty()) {
            m_Text.append(" ").append(name).append("=\"");
            AppendEscaped(value, m_Text);
            m_Text += '"';
        }
    }
    m_Text += '>';
}

void Markup::Close(std::string_view tag) {
    m_Text.append("</").append(tag).append(">");
    if (std::find(std::begin(kInline), std::end(kInline), tag) == std::end(kInline)) {
        m_Text += '\n';
    }
}

}  // namespace views
