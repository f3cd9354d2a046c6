#include "Requests.h"

#include "qel/portable/CWbemRepository.h"

namespace wbem::test {
namespace {

http::Response Asked(const std::string& method, const std::string& path = ObjectManager::kPath) {
    http::Request request = Question().Request();
    request.method = method;
    request.path = path;
    return std::get<http::Response>(ObjectManager().Answer(request, {}));
}

MethodCall CallOf(const Question& question) {
    const auto answer = ObjectManager().Answer(question.Request(), {});
    const auto* const call = std::get_if<MethodCall>(&answer);
    EXPECT_NE(call, nullptr) << std::get<http::Response>(answer).Text();
    return call != nullptr ? *call : MethodCall{};
}

const Question kDrive{
    .method = "getpdinfo",
    .arguments = Parameter("PDNO", "3") + Parameter("CtrlNo", "0") + Parameter("EnclNo", " 252"),
    .className = "zorbalt_mngsrvraid"};

std::string AnswerOf(const MethodOutcome& outcome) {
    return Content(ObjectManager().AnswerOf(CallOf(kDrive), outcome));
}

TEST(TheObjectManager, IsAtOnePath) {
    EXPECT_EQ(Asked("POST", "/cimom/").status, 404);
    EXPECT_EQ(Asked("POST").status, 200);
}

TEST(TheObjectManager, TakesNothingButPost) {
    for (const char* const method : {"GET", "HEAD", "PUT", "DELETE"}) {
        const http::Response response = Asked(method);
        EXPECT_EQ(response.status, 405) << method;
        EXPECT_EQ(*http::Find(response.headers, "Allow"), "POST, OPTIONS");
    }
    EXPECT_EQ(Asked("M-POST").status, 501);
}

TEST(TheObjectManager, TellsWhatItCan) {
    const http::Response response = Asked("OPTIONS");
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(*http::Find(response.headers, "Opt"), "http://www.dmtf.org/cim/mapping/http/v1.0 ; ns=77");
    EXPECT_EQ(*http::Find(response.headers, "77-CIMSupportedFunctionalGroups"), "basic-read");
    EXPECT_EQ(http::Find(response.headers, "77-CIMSupportsMultipleOperations"), nullptr);
}

TEST(TheObjectManager, AnswersWithTheHeadersOfTheProtocol) {
    for (const http::Response& response :
         {Asked("POST"), ObjectManager().AnswerOf(CallOf(kDrive), {.returnValue = 0U})}) {
        EXPECT_EQ(*http::Find(response.headers, "Content-Type"), "application/xml; charset=utf-8");
        EXPECT_EQ(*http::Find(response.headers, "CIMOperation"), "MethodResponse");
        EXPECT_EQ(*http::Find(response.headers, "CIMProtocolVersion"), "1.0");
    }
}

TEST(AMethodCall, HasTheNamesAndTheOrderOfTheDeclaration) {
    const MethodCall call = CallOf(kDrive);
    EXPECT_EQ(call.className, kRaid);
    EXPECT_EQ(call.method, "GetPDInfo");
    EXPECT_EQ(call.arguments,
              (std::vector<MethodArgument>{{"CtrlNo", "0"}, {"EnclNo", " 252"}, {"PDNo", "3"}}));
    EXPECT_TRUE(CallOf({.method = "GetInfo", .className = kRaid}).arguments.empty());
}

MethodCall CallFor(const std::string& drive) {
    return CallOf({.method = "GetPDInfo",
                   .arguments = Parameter("CtrlNo", "0") + Parameter("EnclNo", "") + Parameter("PDNo", drive),
                   .className = kRaid});
}

TEST(AMethodCall, HasItsTextsAsTheyWereMeant) {
    EXPECT_EQ(CallFor("&lt;&#65;<![CDATA[&]]> \xc3\xa9").arguments,
              (std::vector<MethodArgument>{{"CtrlNo", "0"}, {"EnclNo", ""}, {"PDNo", "<A& \xc3\xa9"}}));
}

TEST(AMethodCall, HasOnlyWhatWasGiven) {
    EXPECT_EQ(CallOf({.method = "GetPDInfo",
                      .arguments = Parameter("PDNo", "") + R"(<PARAMVALUE NAME="EnclNo"/>)",
                      .className = kRaid})
                  .arguments,
              (std::vector<MethodArgument>{{"PDNo", ""}}))
        << "an empty text is a value, and none is none";
}

TEST(AMethodCall, HasTheNumbersThatTheModuleReads) {
    const std::pair<const char*, std::int64_t> numbers[] = {
        {"3", 3}, {" 12abc", 12}, {"abc", 0}, {"-1", -1}, {"99999999999999999999", INT64_MAX}};
    for (const auto& [text, number] : numbers) {
        EXPECT_EQ(NumberOf(CallFor(text).arguments.back()), number) << text;
    }
}

TEST(AMethodCall, HasTheKeyThatIsHandedOver) {
    EXPECT_EQ(CallFor("0").appKey, std::nullopt);
    EXPECT_EQ(CallOf({.method = "GetInfo", .arguments = Parameter("__AppKey", "k&amp;y"), .className = kRaid})
                  .appKey,
              "k&y");
    EXPECT_EQ(
        CallOf({.method = "GetInfo", .arguments = R"(<PARAMVALUE NAME="__AppKey"/>)", .className = kRaid})
            .appKey,
        std::nullopt);
}

TEST(AMethodCall, HasArgumentsOfTheDeclaredTypes) {
    CWbemRepository* const repository = CWbemRepository::Create();
    repository->DeclareClass(
        {kRaid, {}, {{"GetInfo", {{"Number", WbemType::Uint32}}, {}}, {"GetPDInfo", {}, {}}}});
    const ObjectManager manager(*repository);
    repository->Release();
    const auto answerTo = [&](const std::string& value) {
        const Question question{
            .method = "GetInfo", .arguments = Parameter("Number", value), .className = kRaid};
        return manager.Answer(question.Request(), {});
    };
    EXPECT_EQ(std::get<MethodCall>(answerTo("12")).arguments.front().value, "12");
    EXPECT_EQ(ErrorOf(std::get<http::Response>(answerTo("twelve"))), "4: the parameter Number is no uint32");
}

TEST(AnOutcome, IsTheReturnValueAndThenTheDocument) {
    EXPECT_EQ(
        AnswerOf({.returnValue = 0U, .document = "<?xml version=\"1.0\"?>\n<RAID a='&#10;'/>\n"}),
        R"(<METHODRESPONSE NAME="getpdinfo"><RETURNVALUE PARAMTYPE="uint32"><VALUE>0</VALUE></RETURNVALUE>)"
        R"(<PARAMVALUE NAME="XmlData" PARAMTYPE="string"><VALUE>&lt;?xml version="1.0"?&gt;)"
        "\n&lt;RAID a='&amp;#10;'/&gt;\n</VALUE></PARAMVALUE></METHODRESPONSE>");
}

TEST(AnOutcome, HasTheReturnValueOfAFailure) {
    EXPECT_EQ(AnswerOf({.returnValue = 0x80000001U}),
              R"(<METHODRESPONSE NAME="getpdinfo"><RETURNVALUE PARAMTYPE="uint32"><VALUE>2147483649</VALUE>)"
              R"(</RETURNVALUE><PARAMVALUE NAME="XmlData" PARAMTYPE="string"><VALUE></VALUE></PARAMVALUE>)"
              "</METHODRESPONSE>");
}

std::string FailureOf(const MethodOutcome& outcome) {
    return ErrorOf(ObjectManager().AnswerOf(CallOf(kDrive), outcome));
}

TEST(AnOutcome, IsAnErrorWhereTheModuleDidNotAnswer) {
    EXPECT_EQ(FailureOf({.status = 0x8004100CU}), "7: the call failed with status 0x8004100c");
    EXPECT_EQ(FailureOf({.status = 0x80041001U, .failure = "the \"tool\" threw <up>"}),
              "1: the \"tool\" threw <up>");
    EXPECT_EQ(FailureOf({.failure = "it took longer than\n60 s", .returnValue = 0U}),
              "1: it took longer than\\n60 s");
    EXPECT_EQ(FailureOf({}), "1: the call gave no return value");
}

TEST(AnOutcome, OfNoCallIsAnErrorToo) {
    EXPECT_EQ(ErrorOf(ObjectManager().AnswerOf({"", "A", {}, {}, "4711", "A"}, {.returnValue = 0U})),
              "17: there is no such method");
}

}  // namespace
}  // namespace wbem::test
