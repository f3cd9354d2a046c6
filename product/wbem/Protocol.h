#pragma once

#include "Xml.h"
#include "http/Message.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace wbem {

/// A request that HTTP or the protocol refuses before it comes to an operation, as DSP0200 has it; with words
/// for people, the body.
class Refusal final : public std::runtime_error {
  public:
    /// `cimError` is a literal such as "request-not-well-formed"; empty where the status says it all.
    Refusal(int status, const char* cimError, const std::string& words)
        : std::runtime_error(words), m_Status(status), m_CimError(cimError) {}

    [[nodiscard]] http::Response Answer() const;

  private:
    int m_Status;
    const char* m_CimError;
};

/// A value that came with a call.
struct Argument {
    std::string name;
    std::string type{};              ///< PARAMTYPE; empty where it does not say
    std::optional<Element> value{};  ///< nothing: no value
};

/// The one call that a request is.
struct Call {
    std::string messageId;
    bool isIntrinsic = false;   ///< of an operation of the protocol, and not of a class's method
    std::string name;           ///< "GetClass", "GetPDInfo"
    std::string nameSpace;      ///< "root/zorbalt"
    std::string className{};    ///< of a method
    bool isOfInstance = false;  ///< the method's target is an instance of that class
    std::vector<Argument> arguments{};
};

/// Takes a POST apart, and holds its headers against its body. Throws Refusal.
[[nodiscard]] Call ReadCall(const http::Request& request);

}  // namespace wbem
