#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace wbem {

/// Why a text is not read, in one line.
class XmlError final : public std::runtime_error {
  public:
    enum class Kind {
        NotWellFormed,
        Refused,  ///< well-formed or not: with a document type, too deep, with too many attributes
    };
    XmlError(Kind kind, const std::string& what) : std::runtime_error(what), m_Kind(kind) {}

    [[nodiscard]] Kind TheKind() const { return m_Kind; }

  private:
    Kind m_Kind;
};

/// An element with all that is in it, comments and instructions left out.
///
///     <NAMESPACE NAME="root"/>
struct Element {
    std::string name{};
    std::vector<std::pair<std::string, std::string>> attributes{};
    std::vector<Element> children{};
    std::string text{};  ///< what stands directly in it, one piece

    /// Null where there is none.
    [[nodiscard]] const std::string* Attribute(std::string_view called) const;
    [[nodiscard]] const Element* Child(std::string_view called) const;  ///< the first
};

/// Reads a document of UTF-8 that nobody vouches for. Takes time in proportion to its length; no document
/// type, and so no entity but the five; no more than `kDeepest` elements inside each other. Opens nothing.
/// Throws XmlError.
[[nodiscard]] Element ReadXml(std::string_view text);

inline constexpr std::size_t kDeepest = 32;
/// Of an element; the parser compares each attribute with all others.
inline constexpr std::size_t kMostAttributes = 256;

}  // namespace wbem
