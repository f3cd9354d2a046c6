#include "Requests.h"

#include <algorithm>
#include <functional>

namespace wbem::test {
namespace {

using Change = std::function<void(http::Request&)>;

std::string* HeaderOf(http::Request& request, const std::string& name) {
    const auto found = std::find_if(request.headers.begin(), request.headers.end(),
                                    [&](const http::Field& field) { return field.first == name; });
    return found == request.headers.end() ? nullptr : &found->second;
}

Change Set(const std::string& name, const std::string& value) {
    return [=](http::Request& request) {
        std::string* const header = HeaderOf(request, name);
        if (header != nullptr) {
            *header = value;
        } else {
            request.headers.emplace_back(name, value);
        }
    };
}

Change Add(const std::string& name, const std::string& value) {
    return [=](http::Request& request) { request.headers.emplace_back(name, value); };
}

Change Remove(const std::string& name) {
    return [=](http::Request& request) {
        std::erase_if(request.headers, [&](const http::Field& field) { return field.first == name; });
    };
}

Change Replace(const std::string& what, const std::string& with) {
    return [=](http::Request& request) {
        const std::size_t at = request.body.find(what);
        ASSERT_NE(at, std::string::npos) << what;
        request.body.replace(at, what.size(), with);
    };
}

Change Body(const std::string& body) {
    return [=](http::Request& request) { request.body = body; };
}

http::Response Changed(const Change& change, const Question& question = {}) {
    http::Request request = question.Request();
    change(request);
    const auto answer = ObjectManager().Answer(request, {});
    return std::holds_alternative<http::Response>(answer) ? std::get<http::Response>(answer)
                                                          : http::Response{.status = 200};
}

struct Case {
    const char* name;
    Change change;
    int status;
    std::string cimError;
};

class ARequest : public testing::TestWithParam<Case> {};

TEST_P(ARequest, IsRefusedAsTheProtocolHasIt) {
    const http::Response response = Changed(GetParam().change);
    EXPECT_EQ(response.status, GetParam().status) << response.Text();
    const std::string* const error = http::Find(response.headers, "CIMError");
    EXPECT_EQ(error != nullptr ? *error : "", GetParam().cimError);
    EXPECT_TRUE(response.Text().ends_with('\n')) << "it is said in words";
}

constexpr const char* kLoosely = "request-not-loosely-valid";
constexpr const char* kMultiple = "multiple-requests-unsupported";
constexpr const char* kMismatch = "header-mismatch";

INSTANTIATE_TEST_SUITE_P(
    Headers, ARequest,
    testing::Values(
        Case{"NoOperation", Remove("CIMOperation"), 400, "unsupported-operation"},
        Case{"OtherOperation", Set("CIMOperation", "MethodRequest"), 400, "unsupported-operation"},
        Case{"TwoOperations", Add("cimoperation", "MethodCall"), 400, kMismatch},
        Case{"OtherProtocol", Set("CIMProtocolVersion", "2.0"), 501, "unsupported-protocol-version"},
        Case{"NoProtocol", Set("CIMProtocolVersion", "1"), 501, "unsupported-protocol-version"},
        Case{"DifferentProtocol", Set("CIMProtocolVersion", "1.1"), 400, kMismatch},
        Case{"Batch", Set("CIMBatch", ""), 501, kMultiple},
        Case{"NoMethod", Remove("CIMMethod"), 400, kMismatch},
        Case{"OtherMethod", Set("CIMMethod", "GetClass"), 400, kMismatch},
        Case{"NoObject", Remove("CIMObject"), 400, kMismatch},
        Case{"OtherObject", Set("CIMObject", "root/cimv2"), 400, kMismatch},
        Case{"ObjectOfAClass", Set("CIMObject", "root/zorbalt:A"), 400, kMismatch},
        Case{"TwoObjects", Add("CIMObject", "root/zorbalt"), 400, kMismatch},
        Case{"NoType", Remove("Content-Type"), 415, ""},
        Case{"OtherType", Set("Content-Type", "application/json"), 415, ""},
        Case{"OtherCharset", Set("Content-Type", "text/xml; charset=iso-8859-1"), 415, ""}),
    [](const auto& test) { return test.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Bodies, ARequest,
    testing::Values(
        Case{"Empty", Body(""), 400, "request-not-well-formed"},
        Case{"CutOff", Replace("</CIM>", ""), 400, "request-not-well-formed"},
        Case{"BareLess", Replace("<IMETHODCALL", "<<IMETHODCALL"), 400, "request-not-well-formed"},
        Case{"OtherEncoding", Replace("utf-8", "latin1"), 400, "request-not-well-formed"},
        Case{"DocumentType", Replace("<CIM", "<!DOCTYPE CIM><CIM"), 400, "request-not-valid"},
        Case{"TooLong", Body(std::string(ObjectManager::kLongestRequest + 1, ' ')), 413, ""},
        Case{"OtherCim", Replace("CIMVERSION=\"2.0\"", "CIMVERSION=\"3.0\""), 501, "unsupported-cim-version"},
        Case{"NoCim", Replace("CIMVERSION=\"2.0\"", ""), 400, kLoosely},
        Case{"OtherDtd", Replace("DTDVERSION=\"2.0\"", "DTDVERSION=\"20\""), 501, "unsupported-dtd-version"},
        Case{"OtherProtocolInside", Replace("PROTOCOLVERSION=\"1.0\"", "PROTOCOLVERSION=\"2.0\""), 501,
             "unsupported-protocol-version"},
        Case{"NoMessageId", Replace("ID=\"4711\"", ""), 400, kLoosely},
        Case{"OtherDocument", Body("<A/>"), 400, kLoosely},
        Case{"NoMessage", Body("<CIM CIMVERSION='2.0' DTDVERSION='2.0'/>"), 400, kLoosely},
        Case{"Multiple",
             [](http::Request& request) {
                 Replace("<SIMPLEREQ>", "<MULTIREQ><SIMPLEREQ>")(request);
                 Replace("</SIMPLEREQ>", "</SIMPLEREQ></MULTIREQ>")(request);
             },
             501, kMultiple},
        Case{"NoCall", Replace(Question().Call(), ""), 400, kLoosely},
        Case{"Answer",
             [](http::Request& request) {
                 Replace("<SIMPLEREQ>", "<SIMPLERSP>")(request);
                 Replace("</SIMPLEREQ>", "</SIMPLERSP>")(request);
             },
             400, kLoosely},
        Case{"TwoCalls", Replace("</SIMPLEREQ>", "<METHODCALL NAME='A'/></SIMPLEREQ>"), 400, kLoosely},
        Case{"NoName", Replace("IMETHODCALL NAME=\"EnumerateClassNames\"", "IMETHODCALL"), 400, kLoosely},
        Case{"NoNamespace", Replace("<NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"zorbalt\"/>", ""), 400,
             kLoosely},
        Case{"NoNamespaceName", Replace("<NAMESPACE NAME=\"root\"/>", "<NAMESPACE/>"), 400, kLoosely},
        Case{"TextBetween", Replace("<SIMPLEREQ>", "<SIMPLEREQ>x"), 400, kLoosely},
        Case{"NamelessParameter", Replace("</IMETHODCALL>", "<IPARAMVALUE/></IMETHODCALL>"), 400, kLoosely},
        Case{"TwoValues",
             Replace("</IMETHODCALL>", "<IPARAMVALUE NAME='A'><VALUE/><VALUE/></IPARAMVALUE></IMETHODCALL>"),
             400, kLoosely}),
    [](const auto& test) { return test.param.name; });

class AnotherForm : public testing::TestWithParam<std::pair<const char*, Change>> {};

TEST_P(AnotherForm, OfARequestIsAnswered) {
    EXPECT_EQ(Changed(GetParam().second).status, 200) << Changed(GetParam().second).Text();
}

INSTANTIATE_TEST_SUITE_P(
    Requests, AnotherForm,
    testing::Values(std::pair("TextXml", Set("Content-Type", "text/xml")),
                    std::pair("Charset", Set("Content-Type", "application/xml;charset=UTF-8")),
                    std::pair("NoProtocolVersion", Remove("CIMProtocolVersion")),
                    std::pair("PercentObject", Set("CIMObject", "root%2Fzorbalt")),
                    std::pair("UpperCase", Set("CIMObject", "ROOT/ZORBALT")),
                    std::pair("LaterCim", Replace("CIMVERSION=\"2.0\"", "CIMVERSION=\"2.8\"")),
                    std::pair("LaterDtd", Replace("DTDVERSION=\"2.0\"", "DTDVERSION=\"2.4\"")),
                    std::pair("UnknownAttribute", Replace("<SIMPLEREQ>", "<SIMPLEREQ A='1'>")),
                    std::pair("UnknownElement", Replace("<SIMPLEREQ>", "<SIMPLEREQ><CORRELATOR/>")),
                    std::pair("LineEnds", Replace("<SIMPLEREQ>", "\n<SIMPLEREQ>\n"))),
    [](const auto& test) { return test.param.first; });

TEST(AMethodOfAnInstance, IsHeldAgainstItsClass) {
    const Question question{.method = "GetInfo", .className = "ZORBALT_MngSrvRaid"};
    const auto toInstance = [](http::Request& request) {
        Replace("<LOCALCLASSPATH>", "<LOCALINSTANCEPATH>")(request);
        Replace("</LOCALCLASSPATH>", "</LOCALINSTANCEPATH>")(request);
        Replace("<CLASSNAME NAME=\"ZORBALT_MngSrvRaid\"/>",
                "<INSTANCENAME CLASSNAME=\"ZORBALT_MngSrvRaid\"/>")(request);
    };
    const http::Response response = Changed(
        [&](http::Request& request) {
            toInstance(request);
            Set("CIMObject", "root/zorbalt:ZORBALT_MngSrvRaid.K=%22a.b%22")(request);
        },
        question);
    EXPECT_EQ(ErrorOf(response), "6: ZORBALT_MngSrvRaid has no instances; its methods are the class's");
    EXPECT_EQ(Changed(
                  [&](http::Request& request) {
                      toInstance(request);
                      Set("CIMObject", "root/zorbalt:ZORBALT_MngSrv.K=%22a.b%22")(request);
                  },
                  question)
                  .status,
              400);
}

TEST(AMessage, GetsItsIdBack) {
    const http::Response response = Changed(Replace("4711", "&lt;&quot;&#10;\xc3\xa9"));
    EXPECT_EQ(*ReadXml(response.Text()).Child("MESSAGE")->Attribute("ID"), "<\"\n\xc3\xa9");
}

}  // namespace
}  // namespace wbem::test
