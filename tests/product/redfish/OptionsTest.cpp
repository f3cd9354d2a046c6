#include "Items.h"
#include "Scenarios.h"

#include <gmock/gmock.h>

namespace redfish::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kSystems = "/redfish/v1/Systems";
const std::string kAllDrives = "/redfish/v1/Chassis/1/Drives";

std::vector<std::string> KeysOf(const Json& value) {
    std::vector<std::string> keys;
    for (const auto& [key, part] : value.items()) {
        keys.push_back(key);
    }
    return keys;
}

class OptionsTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { s_Document = new std::string(DocumentOf("large")); }
    static void TearDownTestSuite() { delete s_Document; }

    static inline std::string* s_Document = nullptr;
    Client m_Client{BoardOfXml(*s_Document)};
};

TEST_F(OptionsTest, SelectLeavesWhatIsAskedForAndWhatNamesIt) {
    const Json drive =
        m_Client.Get(kStorage + "/Drives/252-4", {{"$select", "Name, Status/Health,NoSuchKey"}});
    EXPECT_THAT(KeysOf(drive), ElementsAre("@odata.type", "@odata.id", "Name", "Status"));
    EXPECT_EQ(drive["Status"], Json({{"Health", "Warning"}}));
    const Json storage = m_Client.Get(kStorage, {{"$select", "Drives"}});
    EXPECT_THAT(KeysOf(storage), ElementsAre("@odata.type", "@odata.id", "Drives@odata.count", "Drives"));
    EXPECT_EQ(m_Client.Refusal(400, kStorage, {{"$select", ""}}), "QueryParameterValueFormatError");
    EXPECT_EQ(m_Client.Refusal(400, kStorage, {{"$select", "/,/"}}), "QueryParameterValueFormatError");
    EXPECT_EQ(m_Client.Refusal(400, "/redfish/v1/odata", {{"$select", "value"}}),
              "QueryNotSupportedOnResource");
}

TEST_F(OptionsTest, SelectOfAWholePartOutweighsThatOfSomeOfIt) {
    const Json drive = m_Client.Get(kStorage + "/Drives/252-4", {{"$select", "Status/Health,Status"}});
    EXPECT_EQ(drive["Status"].size(), 2U);
    EXPECT_EQ(m_Client.Get(kStorage + "/Drives/252-4", {{"$select", "Status,Status/Health"}}), drive);
}

TEST_F(OptionsTest, TopAndSkipShowAPartAndCountAll) {
    const std::vector<std::string> all = PathsIn(m_Client.Get(kAllDrives)["Members"]);
    const Json part = m_Client.Get(kAllDrives, {{"$skip", "24"}, {"$top", "5"}});
    EXPECT_EQ(part["Members@odata.count"], 26);
    EXPECT_THAT(PathsIn(part["Members"]), ElementsAre(all[24], all[25]));
    EXPECT_THAT(PathsIn(m_Client.Get(kAllDrives, {{"$top", "1"}})["Members"]), ElementsAre(all[0]));
    EXPECT_THAT(m_Client.Get(kAllDrives, {{"$top", "0"}})["Members"], IsEmpty());
    EXPECT_THAT(m_Client.Get(kAllDrives, {{"$skip", "18446744073709551615"}})["Members"], IsEmpty());
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$top", "some"}}), "QueryParameterValueTypeError");
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$skip", ""}}), "QueryParameterValueTypeError");
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$skip", "-1"}}), "QueryParameterOutOfRange");
    EXPECT_EQ(m_Client.Refusal(400, kStorage, {{"$top", "1"}}), "QueryNotSupportedOnResource");
}

TEST_F(OptionsTest, OnlyIsTheOneMember) {
    const http::Response response = m_Client.Ask(kSystems, {{"only", ""}});
    EXPECT_EQ(Json::parse(response.Text()), m_Client.Get(kSystem));
    EXPECT_EQ(HeaderOf(response, "Link"),
              "<http://redfish.dmtf.org/schemas/v1/ComputerSystem.v1_28_0.json>; rel=describedby");
    EXPECT_EQ(m_Client.Get(kAllDrives, {{"only", ""}}), m_Client.Get(kAllDrives)) << "which one?";
    EXPECT_EQ(m_Client.Refusal(400, kSystem, {{"only", ""}}), "QueryNotSupportedOnResource");
    EXPECT_EQ(m_Client.Refusal(400, kSystems, {{"only", ""}, {"$top", "1"}}), "QueryCombinationInvalid");
}

TEST_F(OptionsTest, ExpandPutsMembersInThePlaceOfLinks) {
    const Json systems = m_Client.Get(kSystems, {{"$expand", "."}});
    EXPECT_EQ(systems["Members"][0], m_Client.Get(kSystem));
    const Json deep = m_Client.Get(kSystems, {{"$expand", ".($levels=2)"}});
    EXPECT_EQ(deep["Members"][0]["Storage"], m_Client.Get(std::string(kSystem) + "/Storage"));
    EXPECT_EQ(deep["Members"][0]["Links"], m_Client.Get(kSystem)["Links"]) << "those are for ~";
}

TEST_F(OptionsTest, ExpandOfLinksLeavesTheOthers) {
    const std::string volume = kStorage + "/Volumes/LD0";
    const Json links = m_Client.Get(volume, {{"$expand", "~"}})["Links"];
    EXPECT_EQ(links["Drives"][0], m_Client.Get(kStorage + "/Drives/252-0"));
    EXPECT_EQ(m_Client.Get(kStorage, {{"$expand", "~"}})["Volumes"].size(), 1U);
    const Json both = m_Client.Get(kStorage, {{"$expand", "*"}});
    EXPECT_EQ(both["Volumes"]["Members@odata.count"], 6);
    EXPECT_EQ(both["Links"]["Enclosures"][0]["ChassisType"], "Other");
    const Json system = m_Client.Get(kSystem, {{"$expand", "."}});
    EXPECT_EQ(system["Status"], m_Client.Get(kSystem)["Status"])
        << "where an alarm comes from is a reference";
}

TEST_F(OptionsTest, ExpandWithSelectIsAboutTheMembers) {
    const Json drives =
        m_Client.Get(kAllDrives, {{"$expand", "."}, {"$select", "SerialNumber"}, {"$top", "2"}});
    EXPECT_EQ(drives["Members@odata.count"], 26);
    ASSERT_EQ(drives["Members"].size(), 2U);
    EXPECT_THAT(KeysOf(drives["Members"][1]), ElementsAre("@odata.type", "@odata.id", "SerialNumber"));
}

TEST_F(OptionsTest, ExpandHasLimits) {
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$expand", ".($levels=7)"}}), "QueryParameterOutOfRange");
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$expand", ".($levels=0)"}}), "QueryParameterOutOfRange");
    for (const char* const value :
         {"", "all", ".(", ".($levels=)", ".($levels=x)", ".()", "!", ".($levels=1"}) {
        EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$expand", value}}), "QueryParameterValueFormatError")
            << value;
    }
    EXPECT_EQ(m_Client.Refusal(507, "/redfish/v1/", {{"$expand", "*($levels=6)"}}), "InsufficientStorage")
        << "drives lead to volumes, and those to drives";
}

TEST_F(OptionsTest, UnknownOnesAreRefusedWhereTheyBeginWithADollar) {
    EXPECT_EQ(m_Client.Refusal(501, kAllDrives, {{"$filter", "Name eq 'x'"}}), "QueryNotSupported");
    EXPECT_EQ(m_Client.Refusal(501, kAllDrives, {{"$orderby", "Name"}}), "QueryNotSupported");
    EXPECT_EQ(m_Client.Refusal(501, kAllDrives, {{"$", ""}}), "QueryNotSupported");
    EXPECT_EQ(m_Client.Refusal(501, "/redfish/v1/EventService/SSE", {{"$filter", ""}}), "QueryNotSupported");
    EXPECT_EQ(m_Client.Get(kAllDrives, {{"excerpt", ""}, {"x", "$top"}}), m_Client.Get(kAllDrives));
    EXPECT_EQ(m_Client.Refusal(400, kAllDrives, {{"$top", "1"}, {"$top", "2"}}), "QueryCombinationInvalid");
    EXPECT_EQ(Client::MessageIn(
                  m_Client.Ask("/redfish/v1/SessionService/Sessions", {{"$select", "Id"}}, "POST"), 400),
              "QueryNotSupportedOnOperation");
}

}  // namespace
}  // namespace redfish::test
