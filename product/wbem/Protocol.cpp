#include "Protocol.h"

#include "basics/Words.h"
#include "wbem/ObjectManager.h"

#include <algorithm>

namespace wbem {
namespace {

using basics::IsSameWord;

[[noreturn]] void NotLooselyValid(const std::string& words) {
    throw Refusal(400, "request-not-loosely-valid", words);
}

[[noreturn]] void Mismatch(const std::string& words) {
    throw Refusal(400, "header-mismatch", words);
}

/// "1.4" of "1": later ones of the same number add to it and take nothing away.
void RequireVersion(std::string_view version, std::string_view major, const char* cimError) {
    const bool isKnown = version.starts_with(major) && version.substr(major.size()).starts_with('.') &&
                         basics::NumberFrom<unsigned>(version.substr(major.size() + 1)).has_value();
    if (!isKnown) {
        throw Refusal(501, cimError,
                      "only version " + std::string(major) + ".0 and what adds to it is known");
    }
}

const std::string& Needed(const Element& element, std::string_view attribute) {
    const std::string* const value = element.Attribute(attribute);
    if (value == nullptr) {
        NotLooselyValid(element.name + " has no " + std::string(attribute));
    }
    return *value;
}

/// An element that holds others has no text of its own.
void RequireNoText(const Element& element) {
    if (!basics::Trimmed(element.text).empty()) {
        NotLooselyValid(element.name + " holds text");
    }
}

const Element& NeededChild(const Element& element, std::string_view name) {
    RequireNoText(element);
    const Element* const child = element.Child(name);
    if (child == nullptr) {
        NotLooselyValid(element.name + " has no " + std::string(name));
    }
    return *child;
}

// Where a header is there twice, a proxy may have read the other one.
const std::string* OnlyHeader(const http::Request& request, std::string_view name) {
    const auto isNamed = [&](const http::Field& field) { return IsSameWord(field.first, name); };
    if (std::count_if(request.headers.begin(), request.headers.end(), isNamed) > 1) {
        Mismatch("the header " + std::string(name) + " is there more than once");
    }
    return request.Header(name);
}

void CheckContentType(const http::Request& request) {
    const std::string* const type = OnlyHeader(request, "Content-Type");
    const std::vector<std::string_view> parts =
        type != nullptr ? basics::Words(*type, ";") : std::vector<std::string_view>();
    const std::string_view media = parts.empty() ? std::string_view() : basics::Trimmed(parts.front());
    if (!IsSameWord(media, "application/xml") && !IsSameWord(media, "text/xml")) {
        throw Refusal(415, "", "the body must be application/xml or text/xml");
    }
    for (const std::string_view part : parts) {
        const std::string setting = basics::InLowerCase(basics::Trimmed(part));
        if (setting.starts_with("charset=") && setting != "charset=utf-8" && setting != "charset=\"utf-8\"") {
            throw Refusal(415, "", "the body must be UTF-8");
        }
    }
}

void CheckHeaders(const http::Request& request) {
    if (request.body.size() > ObjectManager::kLongestRequest) {
        throw Refusal(
            413, "",
            "the request is longer than " + std::to_string(ObjectManager::kLongestRequest) + " bytes");
    }
    CheckContentType(request);
    const std::string* const operation = OnlyHeader(request, "CIMOperation");
    if (operation == nullptr || !IsSameWord(basics::Trimmed(*operation), "MethodCall")) {
        throw Refusal(400, "unsupported-operation", "the header CIMOperation must be MethodCall");
    }
    if (const std::string* const version = OnlyHeader(request, "CIMProtocolVersion")) {
        RequireVersion(basics::Trimmed(*version), "1", "unsupported-protocol-version");
    }
    if (OnlyHeader(request, "CIMBatch") != nullptr) {
        throw Refusal(501, "multiple-requests-unsupported", "one request at a time");
    }
}

std::string NameSpaceOf(const Element& target) {
    const Element& path = NeededChild(target, "LOCALNAMESPACEPATH");
    RequireNoText(path);
    std::string name;
    for (const Element& part : path.children) {
        if (part.name == "NAMESPACE") {
            name += (name.empty() ? "" : "/") + Needed(part, "NAME");
        }
    }
    if (name.empty()) {
        NotLooselyValid("LOCALNAMESPACEPATH is empty");
    }
    return name;
}

std::vector<Argument> ArgumentsOf(const Element& call, std::string_view kind) {
    std::vector<Argument> arguments;
    for (const Element& child : call.children) {
        if (child.name != kind) {
            continue;
        }
        RequireNoText(child);
        if (child.children.size() > 1) {
            NotLooselyValid(child.name + " holds more than one value");
        }
        const std::string* const type = child.Attribute("PARAMTYPE");
        Argument& argument = arguments.emplace_back(Argument{Needed(child, "NAME")});
        argument.type = type != nullptr ? *type : "";
        if (!child.children.empty()) {
            argument.value = child.children.front();
        }
    }
    return arguments;
}

Call ReadIntrinsic(const Element& element) {
    return {.messageId = {},
            .isIntrinsic = true,
            .name = Needed(element, "NAME"),
            .nameSpace = NameSpaceOf(element),
            .arguments = ArgumentsOf(element, "IPARAMVALUE")};
}

Call ReadExtrinsic(const Element& element) {
    RequireNoText(element);
    const bool isOfInstance = element.Child("LOCALINSTANCEPATH") != nullptr;
    const Element& target = NeededChild(element, isOfInstance ? "LOCALINSTANCEPATH" : "LOCALCLASSPATH");
    const Element& name = NeededChild(target, isOfInstance ? "INSTANCENAME" : "CLASSNAME");
    return {.messageId = {},
            .isIntrinsic = false,
            .name = Needed(element, "NAME"),
            .nameSpace = NameSpaceOf(target),
            .className = Needed(name, isOfInstance ? "CLASSNAME" : "NAME"),
            .isOfInstance = isOfInstance,
            .arguments = ArgumentsOf(element, "PARAMVALUE")};
}

Call ReadMessage(const http::Request& request, const Element& cim) {
    if (cim.name != "CIM") {
        NotLooselyValid("the document is no CIM");
    }
    RequireVersion(Needed(cim, "CIMVERSION"), "2", "unsupported-cim-version");
    RequireVersion(Needed(cim, "DTDVERSION"), "2", "unsupported-dtd-version");
    const Element& message = NeededChild(cim, "MESSAGE");
    const std::string& version = Needed(message, "PROTOCOLVERSION");
    RequireVersion(version, "1", "unsupported-protocol-version");
    const std::string* const header = request.Header("CIMProtocolVersion");
    if (header != nullptr && basics::Trimmed(*header) != version) {
        Mismatch("CIMProtocolVersion is not the message's PROTOCOLVERSION");
    }
    if (message.Child("MULTIREQ") != nullptr) {
        throw Refusal(501, "multiple-requests-unsupported", "one request at a time");
    }
    const Element& simple = NeededChild(message, "SIMPLEREQ");
    RequireNoText(simple);
    const Element* const intrinsic = simple.Child("IMETHODCALL");
    const Element* const extrinsic = simple.Child("METHODCALL");
    if ((intrinsic == nullptr) == (extrinsic == nullptr)) {
        NotLooselyValid("SIMPLEREQ does not hold one call");
    }
    Call call = intrinsic != nullptr ? ReadIntrinsic(*intrinsic) : ReadExtrinsic(*extrinsic);
    call.messageId = Needed(message, "ID");
    return call;
}

std::optional<unsigned char> ByteFrom(std::string_view text) {
    unsigned value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value, 16);
    return text.size() == 2 && read.ptr == text.data() + 2 ? std::optional(static_cast<unsigned char>(value))
                                                           : std::nullopt;
}

std::string PercentDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const auto byte = text[at] == '%' ? ByteFrom(text.substr(at + 1, 2)) : std::nullopt;
        decoded += byte ? static_cast<char>(*byte) : text[at];
        at += byte ? 2U : 0U;
    }
    return decoded;
}

/// Of a method's instance only the class is compared: its keys can be written in more than one way.
void HoldHeadersAgainst(const Call& call, const http::Request& request) {
    const std::string* const method = OnlyHeader(request, "CIMMethod");
    if (method == nullptr || !IsSameWord(PercentDecoded(basics::Trimmed(*method)), call.name)) {
        Mismatch("CIMMethod is not the method that is called");
    }
    const std::string* const object = OnlyHeader(request, "CIMObject");
    std::string said = object != nullptr ? PercentDecoded(basics::Trimmed(*object)) : "";
    std::string meant = call.nameSpace;
    if (!call.isIntrinsic) {
        meant += ":" + call.className;
        said.resize(call.isOfInstance ? std::min(said.find('.'), said.size()) : said.size());
    }
    if (!IsSameWord(said, meant)) {
        Mismatch("CIMObject is not what the call is for");
    }
}

}  // namespace

http::Response Refusal::Answer() const {
    http::Response response =
        http::MakeResponse(m_Status, "text/plain; charset=utf-8", std::string(what()) + '\n');
    if (*m_CimError != '\0') {
        response.headers.emplace_back("CIMError", m_CimError);
    }
    return response;
}

Call ReadCall(const http::Request& request) {
    CheckHeaders(request);
    try {
        Call call = ReadMessage(request, ReadXml(request.body));
        HoldHeadersAgainst(call, request);
        return call;
    } catch (const XmlError& error) {
        const bool isRefused = error.TheKind() == XmlError::Kind::Refused;
        throw Refusal(400, isRefused ? "request-not-valid" : "request-not-well-formed", error.what());
    }
}

}  // namespace wbem
