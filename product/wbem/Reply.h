#pragma once

#include "HealthInstance.h"
#include "Protocol.h"
#include "wbem/MethodCall.h"

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace wbem {

/// Why an operation failed, for the client: a code of DSP0200, and words.
class CimError final : public std::runtime_error {
  public:
    enum Code {
        Failed = 1,
        AccessDenied = 2,
        InvalidNamespace = 3,
        InvalidParameter = 4,
        InvalidClass = 5,
        NotFound = 6,
        NotSupported = 7,
        NoSuchProperty = 12,
        TypeMismatch = 13,
        MethodNotFound = 17,
    };
    CimError(Code code, const std::string& words) : std::runtime_error(words), m_Code(code) {}

    [[nodiscard]] Code TheCode() const { return m_Code; }

  private:
    Code m_Code;
};

/// Which properties a reply is to have, and what else of them.
struct Wanted {
    bool qualifiers = false, classOrigin = false;
    /// In lower case; nothing: all. Names of which there is no property are of no effect.
    std::optional<std::set<std::string>> properties{};

    [[nodiscard]] bool Has(const Property& property) const;
};

// What stands in a reply, appended.
void AppendClass(std::string& xml, const Class& declaration, const Wanted& wanted);
void AppendClassName(std::string& xml, const Class& declaration);
void AppendInstanceName(std::string& xml);  ///< of the one instance there is
void AppendInstance(std::string& xml, const Class& declaration, const std::vector<Values>& values,
                    const Wanted& wanted);
void AppendValues(std::string& xml, const Values& values, bool isArray);  ///< nothing for no value

/// A reply as a whole. `content` is the XML in the operation's IRETURNVALUE.
[[nodiscard]] http::Response Reply(const Call& call, const std::string& content);
[[nodiscard]] http::Response Reply(const Call& call, const CimError& error);
[[nodiscard]] http::Response Reply(const MethodCall& call, const CimError& error);

/// The method's return value, and its out parameters: the document for the first that is a string.
[[nodiscard]] http::Response Reply(const MethodCall& call, const Method& method, std::uint32_t returnValue,
                                   const std::string& document);

}  // namespace wbem
