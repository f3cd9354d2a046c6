#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wbem {

/// A value for an in parameter, as text: "252", "TRUE". Of the type that the class declares.
struct MethodArgument {
    std::string name;  ///< as declared: "EnclNo"
    std::string value;

    bool operator==(const MethodArgument&) const = default;
};

/// The number that the module reads in a text: "12abc" is 12, and "abc" is 0.
[[nodiscard]] std::int64_t NumberOf(const MethodArgument& argument);

/// A method call that a client asks for, to be made by somebody with the rights to. GetPDInfo with
/// ("CtrlNo", "0"), ("EnclNo", "252"), ("PDNo", "3") for instance.
struct MethodCall {
    std::string className;  ///< as declared
    std::string method;     ///< likewise
    /// In the order of the declaration. Whatever is of its type is passed on, "abc" of a string too. A
    /// parameter that the client did not give, or gave no value, is not here: the framework leaves it unset
    /// in the input instance, and what comes of that is the module's answer.
    std::vector<MethodArgument> arguments;
    std::optional<std::string> appKey{};  ///< where the client hands one over as "__AppKey"

    std::string messageId{};  ///< for the answer: what the client called its message
    std::string calledAs{};   ///< and how it wrote the method's name
};

/// What came of it.
struct MethodOutcome {
    std::uint32_t status = 0;  ///< of WBEM: 0, or a failure such as 0x8004100C
    /// In words, why there is no answer of the module (a time limit, a module that cannot be loaded, an
    /// exception); empty where there is one. A failure whatever `status` says.
    std::string failure{};
    std::optional<std::uint32_t> returnValue{};
    std::optional<std::string> document{};  ///< XmlData; nothing where the method gave none
};

}  // namespace wbem
