#include "Operations.h"
#include "Requests.h"

#include "inventory/Snapshot.h"

namespace wbem::test {
namespace {

using std::string;

const string kTheInstance =
    R"(<INSTANCENAME CLASSNAME="ZORBALT_MngSrvRaidHealth"><KEYBINDING NAME="InstanceID">)"
    R"(<KEYVALUE VALUETYPE="string">ZORBALT:RAID</KEYVALUE></KEYBINDING></INSTANCENAME>)";

const string kPlace = Parameter("CtrlNo", "0") + Parameter("EnclNo", "252");

string List(const std::vector<string>& names) {
    string xml = R"(<IPARAMVALUE NAME="PropertyList"><VALUE.ARRAY>)";
    for (const string& name : names) {
        xml += "<VALUE>" + name + "</VALUE>";
    }
    return xml + "</VALUE.ARRAY></IPARAMVALUE>";
}

string Qualifier(const string& name, const string& value) {
    return "<QUALIFIER NAME=\"" + name + R"(" TYPE="boolean" OVERRIDABLE="false"><VALUE>)" + value +
           "</VALUE></QUALIFIER>";
}

std::size_t CountOf(const string& text, const string& what) {
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != string::npos; at = text.find(what, at + 1)) {
        ++count;
    }
    return count;
}

board::Board BoardOfAServer() {
    board::Board board;
    board.host = "a<b";
    board.snapshot = std::make_shared<const inventory::Snapshot>(inventory::Document::Read(
        R"(<RAID version="1"><Item Name="Physical Drive Information" Valid="TRUE">)"
        R"(<Item Name="### General Information ###" Valid="TRUE"><Item Name="PD No." Value="PD7" Valid="TRUE"/>)"
        R"(<Item Name="PD Status" Value="ERROR" Valid="TRUE"/></Item></Item></RAID>)"));
    board.inquiry = {.at = board::TimePoint(std::chrono::seconds(1765432109)), .failure = "it is\nbusy"};
    board.alarms.push_back({{}, {.level = inventory::Level::Critical, .part = "PD9", .what = "gone"}});
    return board;
}

TEST(GetClass, TellsMethodsParametersAndQualifiers) {
    EXPECT_EQ(Returned({.method = "GetClass", .arguments = ClassName("zorbalt_MNGSRVRAID")}),
              R"(<CLASS NAME="ZORBALT_MngSrvRaid"><METHOD NAME="GetInfo" TYPE="uint32">)" +
                  Qualifier("Static", "TRUE") + R"(<PARAMETER NAME="XmlData" TYPE="string">)" +
                  Qualifier("In", "FALSE") + Qualifier("Out", "TRUE") +
                  R"(</PARAMETER></METHOD><METHOD NAME="GetPDInfo" TYPE="uint32">)" +
                  Qualifier("Static", "TRUE") + R"(<PARAMETER NAME="CtrlNo" TYPE="string">)" +
                  Qualifier("In", "TRUE") + Qualifier("Out", "FALSE") +
                  R"(</PARAMETER><PARAMETER NAME="EnclNo" TYPE="string">)" + Qualifier("In", "TRUE") +
                  Qualifier("Out", "FALSE") + R"(</PARAMETER><PARAMETER NAME="PDNo" TYPE="string">)" +
                  Qualifier("In", "TRUE") + Qualifier("Out", "FALSE") +
                  R"(</PARAMETER><PARAMETER NAME="XmlData" TYPE="string">)" + Qualifier("In", "FALSE") +
                  Qualifier("Out", "TRUE") + "</PARAMETER></METHOD></CLASS>");
}

TEST(GetClass, TellsTheOriginWhereItIsWanted) {
    EXPECT_EQ(
        Returned({.method = "GetClass",
                  .arguments = ClassName(kHealth) + Value("IncludeQualifiers", "false") +
                               Value("IncludeClassOrigin", " TRUE ") + Value("LocalOnly", "TRUE") +
                               List({"findings", "InstanceID", "Nothing"})}),
        R"(<CLASS NAME="ZORBALT_MngSrvRaidHealth"><PROPERTY NAME="InstanceID" TYPE="string" )"
        R"(CLASSORIGIN="ZORBALT_MngSrvRaidHealth"></PROPERTY><PROPERTY.ARRAY NAME="Findings" TYPE="string" )"
        R"(CLASSORIGIN="ZORBALT_MngSrvRaidHealth"></PROPERTY.ARRAY></CLASS>)");
}

TEST(GetClass, HasTheKeyAsAQualifier) {
    EXPECT_EQ(
        Returned({.method = "GetClass", .arguments = ClassName(kHealth) + List({"InstanceID", "Host"})}),
        R"(<CLASS NAME="ZORBALT_MngSrvRaidHealth"><PROPERTY NAME="InstanceID" TYPE="string">)" +
            Qualifier("Key", "TRUE") +
            R"(</PROPERTY><PROPERTY NAME="Host" TYPE="string"></PROPERTY></CLASS>)");
}

TEST(GetClass, HasNoPropertiesForAnEmptyList) {
    EXPECT_EQ(Returned({.method = "GetClass", .arguments = ClassName(kHealth) + List({})}),
              R"(<CLASS NAME="ZORBALT_MngSrvRaidHealth"></CLASS>)");
}

TEST(EnumerateClasses, TellsAllThatAreBelowNone) {
    const string classes =
        Returned({.method = "EnumerateClasses", .arguments = Value("DeepInheritance", "TRUE")});
    EXPECT_EQ(CountOf(classes, "<CLASS "), 2U);
    EXPECT_EQ(CountOf(classes, "<METHOD "), 2U);
    EXPECT_EQ(Returned({.method = "EnumerateClasses", .arguments = ClassName(kRaid)}), "");
}

TEST(EnumerateClassNames, TellsAllThatAreBelowNone) {
    for (const string& arguments : {string(), ClassName(""), Value("DeepInheritance", "FALSE")}) {
        EXPECT_EQ(Returned({.method = "EnumerateClassNames", .arguments = arguments}),
                  R"(<CLASSNAME NAME="ZORBALT_MngSrvRaid"/><CLASSNAME NAME="ZORBALT_MngSrvRaidHealth"/>)");
    }
    EXPECT_EQ(Returned({.method = "EnumerateClassNames", .arguments = ClassName(kHealth)}), "");
}

TEST(EnumerateInstanceNames, TellsTheOneThereIs) {
    EXPECT_EQ(Returned({.method = "EnumerateInstanceNames", .arguments = ClassName(kHealth)}), kTheInstance);
    EXPECT_EQ(Returned({.method = "EnumerateInstanceNames", .arguments = ClassName(kRaid)}), "");
}

TEST(EnumerateInstances, TellsTheOneThereIs) {
    const string instances = Returned({.method = "EnumerateInstances", .arguments = ClassName(kHealth)});
    EXPECT_TRUE(instances.starts_with("<VALUE.NAMEDINSTANCE>" + kTheInstance + "<INSTANCE ")) << instances;
    EXPECT_TRUE(instances.ends_with("</INSTANCE></VALUE.NAMEDINSTANCE>")) << instances;
    EXPECT_EQ(Returned({.method = "EnumerateInstances", .arguments = ClassName(kRaid)}), "");
}

string Instance(const std::vector<string>& properties, const board::Board& board) {
    const string xml = Returned(
        {.method = "GetInstance", .arguments = InstanceName(kHealth, "ZORBALT:RAID") + List(properties)},
        board);
    const string open = R"(<INSTANCE CLASSNAME="ZORBALT_MngSrvRaidHealth">)";
    EXPECT_TRUE(xml.starts_with(open)) << xml;
    return xml.substr(open.size(), xml.rfind("</INSTANCE>") - open.size());
}

TEST(GetInstance, TellsWhatTheBoardKnows) {
    const board::Board board = BoardOfAServer();
    EXPECT_EQ(Instance({"Host"}, board),
              R"(<PROPERTY NAME="Host" TYPE="string"><VALUE>a&lt;b</VALUE></PROPERTY>)");
    EXPECT_EQ(Instance({"Health", "Drives", "Groups"}, board),
              R"(<PROPERTY NAME="Health" TYPE="string"><VALUE>CRITICAL</VALUE></PROPERTY>)"
              R"(<PROPERTY NAME="Groups" TYPE="uint32"><VALUE>0</VALUE></PROPERTY>)"
              R"(<PROPERTY NAME="Drives" TYPE="uint32"><VALUE>1</VALUE></PROPERTY>)");
    EXPECT_EQ(Instance({"Findings"}, board),
              R"(<PROPERTY.ARRAY NAME="Findings" TYPE="string"><VALUE.ARRAY><VALUE>)" +
                  string(NameOfLevel(board.snapshot->TheHealth().findings.front())) + ": " +
                  Describe(board.snapshot->TheHealth().findings.front()) +
                  "</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>");
    EXPECT_EQ(CountOf(Instance({"Alarms"}, board), "<VALUE>CRITICAL: "), 1U);
    EXPECT_EQ(
        Instance({"AskedAt", "Failure"}, board),
        R"(<PROPERTY NAME="AskedAt" TYPE="datetime"><VALUE>20251211054829.000000+000</VALUE></PROPERTY>)"
        R"(<PROPERTY NAME="Failure" TYPE="string"><VALUE>it is\nbusy</VALUE></PROPERTY>)");
}

TEST(GetInstance, LeavesOutWhatIsNotKnown) {
    EXPECT_EQ(
        Instance({"Host", "Health", "Summary", "Findings", "Drives", "AnsweredAt", "AskedAt", "Failure"}, {}),
        R"(<PROPERTY NAME="Host" TYPE="string"></PROPERTY>)"
        R"(<PROPERTY NAME="Health" TYPE="string"><VALUE>UNKNOWN</VALUE></PROPERTY>)"
        R"(<PROPERTY NAME="Summary" TYPE="string"></PROPERTY>)"
        R"(<PROPERTY.ARRAY NAME="Findings" TYPE="string"></PROPERTY.ARRAY>)"
        R"(<PROPERTY NAME="Drives" TYPE="uint32"></PROPERTY>)"
        R"(<PROPERTY NAME="AnsweredAt" TYPE="datetime"></PROPERTY>)"
        R"(<PROPERTY NAME="AskedAt" TYPE="datetime"></PROPERTY>)"
        R"(<PROPERTY NAME="Failure" TYPE="string"></PROPERTY>)");
}

TEST(GetInstance, TakesTheOnlyKeyWithoutItsName) {
    EXPECT_NE(
        Returned({.method = "GetInstance",
                  .arguments = R"(<IPARAMVALUE NAME="InstanceName"><INSTANCENAME )"
                               R"(CLASSNAME="ZORBALT_MngSrvRaidHealth"><KEYVALUE>ZORBALT:RAID</KEYVALUE>)"
                               "</INSTANCENAME></IPARAMVALUE>"}),
        "");
}

TEST(GetProperty, TellsOneValue) {
    const string instance = InstanceName(kHealth, "ZORBALT:RAID");
    EXPECT_EQ(Returned({.method = "GetProperty", .arguments = instance + Value("PropertyName", "health")}),
              "<VALUE>UNKNOWN</VALUE>");
    EXPECT_EQ(Returned({.method = "GetProperty", .arguments = instance + Value("PropertyName", "Host")}), "");
    EXPECT_EQ(ErrorOf({.method = "GetProperty", .arguments = instance + Value("PropertyName", "X")}),
              "12: ZORBALT_MngSrvRaidHealth has no property X");
}

struct Failure {
    const char* name;
    Question question;
    string error;
};

class AnOperation : public testing::TestWithParam<Failure> {};

TEST_P(AnOperation, FailsWithItsError) {
    EXPECT_EQ(ErrorOf(GetParam().question, BoardOfAServer()), GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Failures, AnOperation,
    testing::Values(
        Failure{"OtherNamespace",
                {.nameSpace = "root/cimv2"},
                "3: there is no namespace root/cimv2; it is root/zorbalt"},
        Failure{"OtherNamespaceOfAMethod",
                {.method = "GetInfo", .nameSpace = "root/cimv2", .className = kRaid},
                "3: there is no namespace root/cimv2; it is root/zorbalt"},
        Failure{"ClassOfGetClass",
                {.method = "GetClass", .arguments = ClassName("A&lt;")},
                "6: there is no class A<"},
        Failure{"ClassOfEnumerateClasses",
                {.method = "EnumerateClasses", .arguments = ClassName("A")},
                "5: there is no class A"},
        Failure{"ClassOfEnumerateClassNames",
                {.method = "EnumerateClassNames", .arguments = ClassName("A")},
                "5: there is no class A"},
        Failure{"ClassOfEnumerateInstances",
                {.method = "EnumerateInstances", .arguments = ClassName("A")},
                "5: there is no class A"},
        Failure{"ClassOfEnumerateInstanceNames",
                {.method = "EnumerateInstanceNames", .arguments = ClassName("A")},
                "5: there is no class A"},
        Failure{"ClassOfGetInstance",
                {.method = "GetInstance", .arguments = InstanceName("A", "B")},
                "5: there is no class A"},
        Failure{"InstanceOfGetInstance",
                {.method = "GetInstance", .arguments = InstanceName(kHealth, "B")},
                "6: there is no such instance of ZORBALT_MngSrvRaidHealth"},
        Failure{"KeyOfAnotherName",
                {.method = "GetInstance", .arguments = InstanceName(kHealth, "ZORBALT:RAID", "ID")},
                "6: there is no such instance of ZORBALT_MngSrvRaidHealth"},
        Failure{"TwoKeys",
                {.method = "GetInstance",
                 .arguments = InstanceName(
                     kHealth, "ZORBALT:RAID</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"A\"><KEYVALUE>")},
                "6: there is no such instance of ZORBALT_MngSrvRaidHealth"},
        Failure{"InstanceOfTheOtherClass",
                {.method = "GetInstance", .arguments = InstanceName(kRaid, "ZORBALT:RAID")},
                "6: there is no such instance of ZORBALT_MngSrvRaid"},
        Failure{"NoClass", {.method = "GetClass"}, "4: the parameter ClassName is missing"},
        Failure{"NoClassName",
                {.method = "GetClass",
                 .arguments = R"(<IPARAMVALUE NAME="ClassName"><CLASSNAME/></IPARAMVALUE>)"},
                "4: the parameter ClassName has no NAME"},
        Failure{"ClassWithoutValue",
                {.method = "GetClass", .arguments = R"(<IPARAMVALUE NAME="ClassName"/>)"},
                "4: the parameter ClassName is missing"},
        Failure{"ClassAsText",
                {.method = "GetClass", .arguments = Value("ClassName", kRaid)},
                "4: the parameter ClassName must be a CLASSNAME"},
        Failure{"NoInstance", {.method = "GetInstance"}, "4: the parameter InstanceName is missing"},
        Failure{"NoPropertyName",
                {.method = "GetProperty", .arguments = InstanceName(kHealth, "ZORBALT:RAID")},
                "4: the parameter PropertyName is missing"},
        Failure{"UnknownParameter",
                {.method = "EnumerateClassNames", .arguments = Value("LocalOnly", "TRUE")},
                "4: the parameter LocalOnly is unknown"},
        Failure{"ParameterTwice",
                {.method = "EnumerateClassNames",
                 .arguments = Value("DeepInheritance", "TRUE") + Value("deepinheritance", "TRUE")},
                "4: the parameter deepinheritance is there more than once"},
        Failure{"NoBoolean",
                {.method = "EnumerateClassNames", .arguments = Value("DeepInheritance", "1")},
                "4: the parameter DeepInheritance is neither TRUE nor FALSE"},
        Failure{"UnusedNoBoolean",
                {.method = "GetClass", .arguments = ClassName(kRaid) + Value("LocalOnly", "1")},
                "4: the parameter LocalOnly is neither TRUE nor FALSE"},
        Failure{"Change", {.method = "DeleteInstance"}, "7: the operation DeleteInstance is not served"},
        Failure{"Query", {.method = "ExecQuery"}, "7: the operation ExecQuery is not served"},
        Failure{"Anything", {.method = "Anything"}, "7: the operation Anything is not served"},
        Failure{"Method",
                {.method = "SetInfo", .className = kRaid},
                "17: ZORBALT_MngSrvRaid has no method SetInfo"},
        Failure{"OperationAsMethod",
                {.method = "GetClass", .className = kRaid},
                "17: ZORBALT_MngSrvRaid has no method GetClass"},
        Failure{"MethodOfTheOtherClass",
                {.method = "GetInfo", .className = kHealth},
                "17: ZORBALT_MngSrvRaidHealth has no method GetInfo"},
        Failure{"MethodOfNoClass", {.method = "GetInfo", .className = "A"}, "6: there is no class A"},
        Failure{"UnknownArgument",
                {.method = "GetInfo", .arguments = Parameter("CtrlNo", "0"), .className = kRaid},
                "4: the parameter CtrlNo is unknown"},
        Failure{
            "LongKey",
            {.method = "GetInfo", .arguments = Parameter("__AppKey", string(257, 'x')), .className = kRaid},
            "4: the parameter __AppKey is too long"},
        Failure{"OutArgument",
                {.method = "GetInfo", .arguments = Parameter("XmlData", "x"), .className = kRaid},
                "4: the parameter XmlData is unknown"},
        Failure{"ArgumentTwice",
                {.method = "GetPDInfo",
                 .arguments = Parameter("PDNo", "1") + Parameter("PDNo", "2"),
                 .className = kRaid},
                "4: the parameter PDNo is there more than once"},
        Failure{"ArgumentOfAnotherType",
                {.method = "GetPDInfo",
                 .arguments = kPlace +
                              R"(<PARAMVALUE NAME="PDNo" PARAMTYPE="uint32"><VALUE>1</VALUE></PARAMVALUE>)",
                 .className = kRaid},
                "4: the parameter PDNo is no string"},
        Failure{"ArgumentWithElements",
                {.method = "GetPDInfo", .arguments = kPlace + Parameter("PDNo", "1<A/>"), .className = kRaid},
                "4: the parameter PDNo is no string"},
        Failure{"ArgumentAsArray",
                {.method = "GetPDInfo",
                 .arguments = kPlace + R"(<PARAMVALUE NAME="PDNo"><VALUE.ARRAY/></PARAMVALUE>)",
                 .className = kRaid},
                "4: the parameter PDNo is no string"}),
    [](const auto& test) { return test.param.name; });

TEST(AStatus, HasItsError) {
    const std::pair<std::uint32_t, CimError::Code> codes[] = {
        {0x80041001U, CimError::Failed},           {0x80041002U, CimError::NotFound},
        {0x80041003U, CimError::AccessDenied},     {0x80041005U, CimError::TypeMismatch},
        {0x80041008U, CimError::InvalidParameter}, {0x8004100CU, CimError::NotSupported},
        {0x80041010U, CimError::InvalidClass},     {0x8004102EU, CimError::MethodNotFound},
        {0x80041006U, CimError::Failed},           {0x12345678U, CimError::Failed}};
    for (const auto& [status, code] : codes) {
        EXPECT_EQ(CodeOf(status), code) << std::hex << status;
    }
}

}  // namespace
}  // namespace wbem::test
