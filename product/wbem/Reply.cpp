#include "Reply.h"

#include "XmlText.h"
#include "basics/Text.h"
#include "basics/Words.h"

namespace wbem {
namespace {

constexpr std::string_view kTail = "</SIMPLERSP></MESSAGE></CIM>\n";

/// ` NAME="value"`
void AppendSetting(std::string& xml, std::string_view name, std::string_view value) {
    xml.append(" ").append(name).append("=\"");
    AppendAttribute(xml, value);
    xml += '"';
}

std::string Head(const std::string& messageId) {
    std::string xml =
        R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE)";
    AppendSetting(xml, "ID", messageId);
    xml += R"( PROTOCOLVERSION="1.0"><SIMPLERSP>)";
    return xml;
}

http::Response Whole(std::string xml) {
    xml += kTail;
    http::Response response = http::MakeResponse(200, "application/xml; charset=utf-8", std::move(xml));
    response.headers.emplace_back("CIMOperation", "MethodResponse");
    response.headers.emplace_back("CIMProtocolVersion", "1.0");
    response.headers.emplace_back("Cache-Control", "no-cache");
    return response;
}

/// "IMETHODRESPONSE" with the name as the client wrote it.
std::string Open(const std::string& messageId, std::string_view element, const std::string& name) {
    std::string xml = Head(messageId);
    xml.append("<").append(element);
    AppendSetting(xml, "NAME", name);
    return xml += '>';
}

http::Response Close(std::string xml, std::string_view element) {
    return Whole(xml.append("</").append(element).append(">"));
}

void AppendError(std::string& xml, const CimError& error) {
    xml += "<ERROR";
    AppendSetting(xml, "CODE", std::to_string(error.TheCode()));
    AppendSetting(xml, "DESCRIPTION", basics::OneLine(error.what()));
    xml += "/>";
}

void AppendQualifier(std::string& xml, const char* name, bool value) {
    xml += "<QUALIFIER";
    AppendSetting(xml, "NAME", name);
    xml += R"( TYPE="boolean" OVERRIDABLE="false"><VALUE>)";
    xml += value ? "TRUE</VALUE></QUALIFIER>" : "FALSE</VALUE></QUALIFIER>";
}

void AppendValue(std::string& xml, std::string_view text) {
    xml += "<VALUE>";
    AppendText(xml, text);
    xml += "</VALUE>";
}

void OpenProperty(std::string& xml, const Class& declaration, const Property& property,
                  const Wanted& wanted) {
    xml += property.isArray ? "<PROPERTY.ARRAY" : "<PROPERTY";
    AppendSetting(xml, "NAME", property.name);
    AppendSetting(xml, "TYPE", NameOf(property.type));
    if (wanted.classOrigin) {
        AppendSetting(xml, "CLASSORIGIN", declaration.name);
    }
    xml += '>';
}

void CloseProperty(std::string& xml, const Property& property) {
    xml += property.isArray ? "</PROPERTY.ARRAY>" : "</PROPERTY>";
}

void AppendParameter(std::string& xml, const Parameter& parameter, const Wanted& wanted) {
    xml += "<PARAMETER";
    AppendSetting(xml, "NAME", parameter.name);
    AppendSetting(xml, "TYPE", NameOf(parameter.type));
    xml += '>';
    if (wanted.qualifiers) {
        AppendQualifier(xml, "In", parameter.isIn);
        AppendQualifier(xml, "Out", parameter.isOut);
    }
    xml += "</PARAMETER>";
}

void AppendMethod(std::string& xml, const Class& declaration, const Method& method, const Wanted& wanted) {
    xml += "<METHOD";
    AppendSetting(xml, "NAME", method.name);
    xml += R"( TYPE="uint32")";
    if (wanted.classOrigin) {
        AppendSetting(xml, "CLASSORIGIN", declaration.name);
    }
    xml += '>';
    if (wanted.qualifiers) {
        AppendQualifier(xml, "Static", true);
    }
    for (const Parameter& parameter : method.parameters) {
        AppendParameter(xml, parameter, wanted);
    }
    xml += "</METHOD>";
}

}  // namespace

bool Wanted::Has(const Property& property) const {
    return !properties || properties->contains(basics::InLowerCase(property.name));
}

void AppendClass(std::string& xml, const Class& declaration, const Wanted& wanted) {
    xml += "<CLASS";
    AppendSetting(xml, "NAME", declaration.name);
    xml += '>';
    for (const Property& property : declaration.properties) {
        if (wanted.Has(property)) {
            OpenProperty(xml, declaration, property, wanted);
            if (property.isKey && wanted.qualifiers) {
                AppendQualifier(xml, "Key", true);
            }
            CloseProperty(xml, property);
        }
    }
    for (const Method& method : declaration.methods) {
        AppendMethod(xml, declaration, method, wanted);
    }
    xml += "</CLASS>";
}

void AppendClassName(std::string& xml, const Class& declaration) {
    xml += "<CLASSNAME";
    AppendSetting(xml, "NAME", declaration.name);
    xml += "/>";
}

void AppendInstanceName(std::string& xml) {
    xml += "<INSTANCENAME";
    AppendSetting(xml, "CLASSNAME", kHealthClass);
    xml += R"(><KEYBINDING NAME="InstanceID"><KEYVALUE VALUETYPE="string">)";
    xml += kInstanceId;
    xml += "</KEYVALUE></KEYBINDING></INSTANCENAME>";
}

void AppendInstance(std::string& xml, const Class& declaration, const std::vector<Values>& values,
                    const Wanted& wanted) {
    xml += "<INSTANCE";
    AppendSetting(xml, "CLASSNAME", declaration.name);
    xml += '>';
    for (std::size_t number = 0; number < values.size(); ++number) {
        const Property& property = declaration.properties[number];
        if (wanted.Has(property)) {
            OpenProperty(xml, declaration, property, wanted);
            AppendValues(xml, values[number], property.isArray);
            CloseProperty(xml, property);
        }
    }
    xml += "</INSTANCE>";
}

void AppendValues(std::string& xml, const Values& values, bool isArray) {
    if (!values) {
        return;
    }
    xml += isArray ? "<VALUE.ARRAY>" : "";
    for (const std::string& value : *values) {
        AppendValue(xml, value);
    }
    xml += isArray ? "</VALUE.ARRAY>" : "";
}

http::Response Reply(const Call& call, const std::string& content) {
    std::string xml = Open(call.messageId, "IMETHODRESPONSE", call.name);
    if (!content.empty()) {
        xml.append("<IRETURNVALUE>").append(content).append("</IRETURNVALUE>");
    }
    return Close(std::move(xml), "IMETHODRESPONSE");
}

http::Response Reply(const Call& call, const CimError& error) {
    const std::string_view element = call.isIntrinsic ? "IMETHODRESPONSE" : "METHODRESPONSE";
    std::string xml = Open(call.messageId, element, call.name);
    AppendError(xml, error);
    return Close(std::move(xml), element);
}

http::Response Reply(const MethodCall& call, const CimError& error) {
    std::string xml = Open(call.messageId, "METHODRESPONSE", call.calledAs);
    AppendError(xml, error);
    return Close(std::move(xml), "METHODRESPONSE");
}

http::Response Reply(const MethodCall& call, const Method& method, std::uint32_t returnValue,
                     const std::string& document) {
    std::string xml = Open(call.messageId, "METHODRESPONSE", call.calledAs);
    xml.reserve(xml.size() + document.size() + document.size() / 4);  // every tag has a "<" and a ">"
    xml += R"(<RETURNVALUE PARAMTYPE="uint32">)";
    AppendValue(xml, std::to_string(returnValue));
    xml += "</RETURNVALUE>";
    bool isFirst = true;
    for (const Parameter& parameter : method.parameters) {
        // One without a value is there all the same, as an empty text: clients end where it is not.
        if (parameter.isOut && parameter.type == Type::String) {
            xml += "<PARAMVALUE";
            AppendSetting(xml, "NAME", parameter.name);
            xml += R"( PARAMTYPE="string">)";
            AppendValue(xml, isFirst ? document : std::string());
            xml += "</PARAMVALUE>";
            isFirst = false;
        }
    }
    return Close(std::move(xml), "METHODRESPONSE");
}

}  // namespace wbem
