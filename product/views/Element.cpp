#include "Element.h"

#include "basics/Text.h"

#include <algorithm>
#include <new>
#include <string>

namespace views::html {
namespace {

constexpr std::size_t kMaxWidth = 300;
constexpr std::string_view kInline[] = {"a", "b", "code", "path", "small", "span", "svg", "td", "th", "time"};

std::string Shown(std::string_view text) {
    return basics::Shortened(basics::Printable(text), kMaxWidth);
}

// The library says in this way that there is no memory left.
void Require(bool isDone) {
    if (!isDone) {
        throw std::bad_alloc();
    }
}

}  // namespace

Element Element::Add(const char* tag, Attributes attributes) {
    Element element(m_Node.append_child());
    Require(element.m_Node.set_name(tag));
    element.Append("");  // Also an empty one is closed by a tag: HTML knows no <p/>.
    for (const auto& [name, value] : attributes) {
        if (!value.empty()) {
            pugi::xml_attribute attribute = element.m_Node.append_attribute("");
            Require(attribute.set_name(name) && attribute.set_value(Shown(value).c_str()));
        }
    }
    if (std::find(std::begin(kInline), std::end(kInline), tag) == std::end(kInline)) {
        Append("\n");
    }
    return element;
}

Element& Element::Add(const char* tag, std::string_view text, Attributes attributes) {
    Add(tag, attributes).Text(text);
    return *this;
}

Element& Element::Text(std::string_view text) {
    return Append(Shown(text).c_str());
}

Element& Element::Append(const char* text) {
    Require(m_Node.append_child(pugi::node_pcdata).set_value(text));
    return *this;
}

}  // namespace views::html
