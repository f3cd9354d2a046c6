#pragma once

#include <pugixml.hpp>

#include <initializer_list>
#include <string_view>
#include <utility>

namespace views::html {

/// A place in a page that is well-formed as XML and as HTML, whatever texts it is given:
///
///     <p class="note">PD0 &amp; PD1</p>
///
/// What is added stands behind what is there already. The page owns its elements; this leads to one of them.
/// Texts and the values of attributes are made printable, and shortened where they are longer than anybody
/// reads. Tags and names of attributes are the program's own.
class Element final {
  public:
    using Attributes = std::initializer_list<std::pair<const char*, std::string_view>>;

    explicit Element(pugi::xml_node node) : m_Node(node) {}

    /// A new element to be filled. An attribute without a value is left out.
    Element Add(const char* tag, Attributes attributes = {});

    /// A new element around a text. Returns this one.
    Element& Add(const char* tag, std::string_view text, Attributes attributes = {});

    Element& Text(std::string_view text);

  private:
    Element& Append(const char* text);

    pugi::xml_node m_Node;
};

}  // namespace views::html
