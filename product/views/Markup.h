#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace views {

/// Markup that is well-formed as XML and as HTML, whatever texts it is given:
///
///     <p class="note">PD0 &amp; PD1</p>
///
/// Texts and the values of attributes are made printable, shortened where they are longer than anybody reads,
/// and escaped. Tags and names of attributes are the program's own.
class Markup final {
  public:
    using Attributes = std::initializer_list<std::pair<std::string_view, std::string_view>>;

    Markup& Text(std::string_view text);

    /// Markup of the program's own, such as an entity or a style sheet; never a report's.
    Markup& Own(std::string_view markup);

    /// An element around what `work` adds.
    template <typename Work>
    Markup& In(std::string_view tag, Attributes attributes, Work work) {
        Open(tag, attributes);
        work();
        Close(tag);
        return *this;
    }

    /// An element around a text. An attribute without a value is left out.
    Markup& Element(std::string_view tag, std::string_view text, Attributes attributes = {});

    [[nodiscard]] std::string Take() { return std::move(m_Text); }

  private:
    void Open(std::string_view tag, Attributes attributes);
    void Close(std::string_view tag);

    std::string m_Text;
};

}  // namespace views
