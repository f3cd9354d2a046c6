#pragma once

#include <string>

/// Asks the command `xmllint`, which must be installed, about documents that the system under test made.
namespace testsupport {

/// Validates `xml` against docs/raid.xsd. Returns "" for a valid document, else xmllint's complaint, or why
/// xmllint could not be asked. Documents of any depth are accepted.
[[nodiscard]] std::string ValidateAgainstSchema(const std::string& xml);

/// The text that an XPath expression such as "string(/RAID/Item[2]/@Value)" yields, without xmllint's closing
/// line feed. Throws `std::runtime_error` with xmllint's complaint when there is no such text.
[[nodiscard]] std::string EvaluateXPath(const std::string& xml, const std::string& expression);

}  // namespace testsupport
