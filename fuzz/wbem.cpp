// What clients of WBEM send: whatever it is, an answer of the protocol comes back. The input is in sections:
// the HTTP method, headers as "Name: value" fields, the body. One whose first section is empty is a call of
// GetPDInfo that is made well-formed here: three arguments, a key, and what comes of it: a text in words, a
// document.

#include "support/Input.h"
#include "support/Property.h"
#include "wbem/ObjectManager.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace fuzzing {
namespace {

using http::Response;
using Parser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

/// A document as a parser that is not the room's reads it.
struct Read {
    bool isWellFormed = false;
    bool hasDocumentType = false;
    std::string elements;  ///< "CIM MESSAGE SIMPLERSP METHODRESPONSE RETURNVALUE VALUE"
    std::string text;      ///< all of it
};

Read ReadXml(std::string_view xml) {
    Read read;
    const Parser parser(XML_ParserCreate("UTF-8"), XML_ParserFree);
    XML_SetUserData(parser.get(), &read);
    XML_SetElementHandler(
        parser.get(),
        [](void* data, const XML_Char* name, const XML_Char**) {
            static_cast<Read*>(data)->elements.append(name).append(" ");
        },
        nullptr);
    XML_SetCharacterDataHandler(parser.get(), [](void* data, const XML_Char* text, int length) {
        static_cast<Read*>(data)->text.append(text, static_cast<std::size_t>(length));
    });
    XML_SetStartDoctypeDeclHandler(parser.get(),
                                   [](void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
                                       static_cast<Read*>(data)->hasDocumentType = true;
                                   });
    read.isWellFormed =
        XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), XML_TRUE) == XML_STATUS_OK;
    return read;
}

const wbem::ObjectManager& Manager() {
    static const wbem::ObjectManager manager;
    return manager;
}

bool IsOneOf(std::string_view text, std::initializer_list<std::string_view> known) {
    return std::find(known.begin(), known.end(), text) != known.end();
}

std::string ErrorOf(const Response& response) {
    const std::string* const error = http::Find(response.headers, "CIMError");
    return error != nullptr ? *error : "";
}

/// That it is a reply of the protocol, or one of the statuses it has for what is none.
void CheckResponse(const Response& response, bool isPost) {
    for (const auto& [name, value] : response.headers) {
        Require(value.find_first_of("\r\n") == std::string::npos, "a header is one line");
    }
    if (response.status == 200 && isPost) {
        const Read reply = ReadXml(response.Text());
        Require(reply.isWellFormed, "a reply is well-formed");
        Require(reply.elements.starts_with("CIM MESSAGE SIMPLERSP IMETHODRESPONSE ") ||
                    reply.elements.starts_with("CIM MESSAGE SIMPLERSP METHODRESPONSE "),
                "a reply is one of the protocol");
        return;
    }
    const std::string error = ErrorOf(response);
    const bool isKnown =
        response.status == 400
            ? IsOneOf(error, {"request-not-well-formed", "request-not-loosely-valid", "request-not-valid",
                              "header-mismatch", "unsupported-operation"})
        : response.status == 501 && isPost
            ? IsOneOf(error, {"unsupported-protocol-version", "unsupported-cim-version",
                              "unsupported-dtd-version", "multiple-requests-unsupported"})
            : error.empty() && IsOneOf(std::to_string(response.status), {"200", "405", "413", "415", "501"});
    Require(isKnown, "what is refused has a status of the protocol");
}

/// That the body was read as another parser reads it, as far as two parsers have to agree: on ASCII, where
/// names are the same in all editions of XML.
void CheckReading(const std::string& body, const Response* response) {
    const bool isAscii = std::all_of(body.begin(), body.end(),
                                     [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    const Read read = ReadXml(body);
    const std::string error = response != nullptr ? ErrorOf(*response) : "";
    const bool wasRead =
        response == nullptr || response->status == 200 || error == "request-not-loosely-valid";
    Require(!wasRead || read.isWellFormed || !isAscii, "nothing is read that is not well-formed");
    Require(!wasRead || !read.hasDocumentType, "nothing is read that has a document type");
    if (error == "request-not-well-formed" && isAscii && !body.starts_with("<?xml")) {
        Require(!read.isWellFormed, "what is said not to be well-formed is not");
    }
}

void CheckAnything(const Sections& sections) {
    http::Request request{.method = std::string(sections.front()), .path = wbem::ObjectManager::kPath};
    for (const std::string_view field : Split(sections.size() > 1 ? sections[1] : "", kFieldEnd)) {
        const std::size_t colon = std::min(field.find(": "), field.size());
        request.headers.emplace_back(field.substr(0, colon), field.substr(std::min(colon + 2, field.size())));
    }
    request.body = sections.size() > 2 ? sections[2] : "";
    const auto answer = Manager().Answer(request, {});
    const auto* const response = std::get_if<Response>(&answer);
    if (response != nullptr) {
        CheckResponse(*response, request.method == "POST");
    } else {
        CheckResponse(Manager().AnswerOf(std::get<wbem::MethodCall>(answer), {.returnValue = 0U}), true);
    }
    if (request.method == "POST") {
        CheckReading(request.body, response);
    }
}

/// Every byte of ASCII as a reference; what no XML can hold is left out.
std::string Escaped(std::string_view text, std::string& carried) {
    std::string xml;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80 && (code >= 0x20 || character == '\t' || character == '\n' || character == '\r')) {
            carried += character;
            xml += "&#" + std::to_string(code) + ";";
        }
    }
    return xml;
}

std::string Argument(const char* name, const std::string& xml) {
    return std::string("<PARAMVALUE NAME='") + name + "'><VALUE>" + xml + "</VALUE></PARAMVALUE>";
}

void CheckCall(const Sections& sections) {
    constexpr std::array kNames{"CtrlNo", "EnclNo", "PDNo", "__AppKey"};
    const auto section = [&](std::size_t number) {
        return number < sections.size() ? sections[number] : std::string_view();
    };
    std::array<std::string, kNames.size()> texts;
    std::string arguments;
    for (std::size_t number = kNames.size(); number-- > 0;) {  // in another order than the declaration's
        arguments += Argument(kNames[number], Escaped(section(number + 1).substr(0, 200), texts[number]));
    }
    const http::Request request{
        .method = "POST",
        .path = wbem::ObjectManager::kPath,
        .headers = {{"Content-Type", "text/xml"},
                    {"CIMOperation", "MethodCall"},
                    {"CIMMethod", "GetPDInfo"},
                    {"CIMObject", "root/zorbalt:ZORBALT_MngSrvRaid"}},
        .body =
            "<CIM CIMVERSION='2.0' DTDVERSION='2.0'><MESSAGE ID='1' PROTOCOLVERSION='1.0'><SIMPLEREQ>"
            "<METHODCALL NAME='GetPDInfo'><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME='root'/>"
            "<NAMESPACE NAME='zorbalt'/></LOCALNAMESPACEPATH><CLASSNAME NAME='ZORBALT_MngSrvRaid'/>"
            "</LOCALCLASSPATH>" +
            arguments + "</METHODCALL></SIMPLEREQ></MESSAGE></CIM>"};
    const auto answer = Manager().Answer(request, {});
    const auto* const call = std::get_if<wbem::MethodCall>(&answer);
    Require(call != nullptr, "a call is passed on");
    for (std::size_t number = 0; number < 3; ++number) {
        Require(call->arguments[number] == wbem::MethodArgument{kNames[number], texts[number]},
                "a call is passed on unchanged");
    }
    Require(call->appKey == texts[3], "and its key");
    const std::string failure(section(5));
    std::string document;
    (void)Escaped(section(6), document);
    std::erase(document, '\r');
    const Response response = Manager().AnswerOf(*call, {0, failure, 0U, document});
    CheckResponse(response, true);
    Require(!failure.empty() || ReadXml(response.Text()).text == "0" + document, "a document comes as it is");
    CheckResponse(Manager().AnswerOf(*call, {0, "", 0U, std::string(section(6))}), true);
}

}  // namespace
}  // namespace fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzzing::Sections sections = fuzzing::Split(fuzzing::TextOf(data, size), fuzzing::kSectionEnd);
    if (sections.front().empty()) {
        fuzzing::CheckCall(sections);
    } else {
        fuzzing::CheckAnything(sections);
    }
    return 0;
}
