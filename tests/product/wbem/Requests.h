#pragma once

#include "Xml.h"
#include "wbem/ObjectManager.h"

#include <gtest/gtest.h>

#include <string>

namespace wbem::test {

inline constexpr const char* kRaid = "ZORBALT_MngSrvRaid";
inline constexpr const char* kHealth = "ZORBALT_MngSrvRaidHealth";

/// What a test asks, as a client writes it.
struct Question {
    std::string method = "EnumerateClassNames";
    std::string arguments{};  ///< IPARAMVALUE or PARAMVALUE elements
    std::string nameSpace = "root/zorbalt";
    std::string className{};  ///< of a class's method; empty: an operation of the protocol

    [[nodiscard]] std::string Call() const {
        const std::size_t slash = nameSpace.find('/');
        const std::string path = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"" + nameSpace.substr(0, slash) +
                                 "\"/><NAMESPACE NAME=\"" + nameSpace.substr(slash + 1) +
                                 "\"/></LOCALNAMESPACEPATH>";
        if (className.empty()) {
            return "<IMETHODCALL NAME=\"" + method + "\">" + path + arguments + "</IMETHODCALL>";
        }
        return "<METHODCALL NAME=\"" + method + "\"><LOCALCLASSPATH>" + path + "<CLASSNAME NAME=\"" +
               className + "\"/></LOCALCLASSPATH>" + arguments + "</METHODCALL>";
    }
    [[nodiscard]] std::string Body() const {
        return R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">)"
               R"(<MESSAGE ID="4711" PROTOCOLVERSION="1.0"><SIMPLEREQ>)" +
               Call() + "</SIMPLEREQ></MESSAGE></CIM>";
    }
    [[nodiscard]] http::Request Request() const {
        return {.method = "POST",
                .path = ObjectManager::kPath,
                .headers = {{"Content-Type", "application/xml; charset=\"utf-8\""},
                            {"CIMProtocolVersion", "1.0"},
                            {"CIMOperation", "MethodCall"},
                            {"CIMMethod", method},
                            {"CIMObject", nameSpace + (className.empty() ? "" : ":" + className)}},
                .body = Body()};
    }
};

inline std::string ClassName(const std::string& name) {
    return R"(<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME=")" + name + R"("/></IPARAMVALUE>)";
}

inline std::string Value(const std::string& name, const std::string& value) {
    return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></IPARAMVALUE>";
}

inline std::string InstanceName(const std::string& className, const std::string& key,
                                const std::string& name = "InstanceID") {
    return R"(<IPARAMVALUE NAME="InstanceName"><INSTANCENAME CLASSNAME=")" + className +
           R"("><KEYBINDING NAME=")" + name + R"("><KEYVALUE VALUETYPE="string">)" + key +
           "</KEYVALUE></KEYBINDING></INSTANCENAME></IPARAMVALUE>";
}

inline std::string Parameter(const std::string& name, const std::string& value) {
    return "<PARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE></PARAMVALUE>";
}

inline http::Response Response(const Question& question, const board::Board& board = {}) {
    const auto answer = ObjectManager().Answer(question.Request(), board);
    EXPECT_TRUE(std::holds_alternative<http::Response>(answer)) << "a method's call, and no answer";
    return std::get<http::Response>(answer);
}

/// What stands between the front and the end that all replies have: "<IMETHODRESPONSE NAME=...".
inline std::string Content(const http::Response& response) {
    static const std::string head =
        R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">)"
        R"(<MESSAGE ID="4711" PROTOCOLVERSION="1.0"><SIMPLERSP>)";
    static const std::string tail = "</SIMPLERSP></MESSAGE></CIM>\n";
    const std::string text(response.Text());
    EXPECT_EQ(response.status, 200);
    EXPECT_NO_THROW((void)ReadXml(text)) << text;
    EXPECT_TRUE(text.starts_with(head) && text.ends_with(tail)) << text;
    return text.substr(head.size(), text.size() - head.size() - tail.size());
}

/// What the operation returns: what stands in its IRETURNVALUE.
inline std::string Returned(const Question& question, const board::Board& board = {}) {
    const std::string content = Content(Response(question, board));
    const std::string open = "<IMETHODRESPONSE NAME=\"" + question.method + "\">";
    const std::string close = "</IMETHODRESPONSE>";
    EXPECT_TRUE(content.starts_with(open) && content.ends_with(close)) << content;
    const std::string inner = content.substr(open.size(), content.size() - open.size() - close.size());
    const std::size_t front = std::string("<IRETURNVALUE>").size();
    EXPECT_TRUE(inner.empty() || inner.starts_with("<IRETURNVALUE>")) << content;
    return inner.empty() ? "" : inner.substr(front, inner.size() - 2 * front - 1);
}

/// "6: there is no class X"; empty where there is no error.
inline std::string ErrorOf(const http::Response& response) {
    const Element content = ReadXml(Content(response));
    const Element* const error = content.Child("ERROR");
    return error == nullptr ? "" : *error->Attribute("CODE") + ": " + *error->Attribute("DESCRIPTION");
}

inline std::string ErrorOf(const Question& question, const board::Board& board = {}) {
    const http::Response response = Response(question, board);
    const std::string element = question.className.empty() ? "<IMETHODRESPONSE " : "<METHODRESPONSE ";
    EXPECT_TRUE(Content(response).starts_with(element + "NAME=\"" + question.method + "\""))
        << response.Text();
    return ErrorOf(response);
}

}  // namespace wbem::test
