#pragma once

#include <string>
#include <string_view>

namespace convlib {

/// Appends any bytes as the inside of a double-quoted attribute value, so that an XML 1.0 parser reads them
/// back: markup is escaped, and tab, line feed and carriage return become references, which attribute
/// normalisation spares. What cannot be carried becomes U+FFFD: bytes that are no UTF-8 (one for each unit of
/// `ReadUtf8`), control characters, U+FFFE and U+FFFF.
void AppendAttributeText(std::string& xml, std::string_view text);

/// Whether `text` can name an element of a document without namespaces: an XML 1.0 name without a colon.
[[nodiscard]] bool IsElementName(std::string_view text);

}  // namespace convlib
