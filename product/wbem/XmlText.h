#pragma once

#include <string>
#include <string_view>

namespace wbem {

/// Whether the bytes are UTF-8, and all characters such as XML 1.0 allows.
[[nodiscard]] bool IsXmlText(std::string_view text);

/// Appends any bytes as text between tags. With &lt;, &gt; and &amp; alone: there are clients that know the
/// five named entities and no numeric reference. What XML cannot carry becomes U+FFFD, one for each byte or
/// character.
void AppendText(std::string& xml, std::string_view text);

/// The same as the inside of an attribute's value in double quotes. Tabs and line ends become references,
/// which attribute normalisation spares.
void AppendAttribute(std::string& xml, std::string_view text);

}  // namespace wbem
