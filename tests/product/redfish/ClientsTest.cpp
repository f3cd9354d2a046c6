// Clients that nobody here wrote.

#include "RunningServer.h"
#include "Scenarios.h"
#include "inventory/Measure.h"
#include "test_support/TempFolder.h"

namespace redfish::test {
namespace {

class ClientsTest : public testing::Test {
  protected:
    ClientsTest()
        : m_Board(BoardOfXml(DocumentOf("large"))),
          m_Document(Kept(m_Folder, *m_Board->document)),
          m_Server({"--account", "monitoring:secret", m_Document}, 1) {}

    [[nodiscard]] testsupport::Ended Run(const std::string& program, std::vector<std::string> words) const {
        return testsupport::Command{.words = std::move(words), .program = program}.Run();
    }

    [[nodiscard]] Json Tool(std::vector<std::string> words, const std::string& way = "Basic") const {
        words.insert(words.begin(),
                     {"-r", m_Server.Host(), "-S", "Never", "-u", "monitoring", "-p", "secret", "-A", way});
        const testsupport::Ended ended = Run("/usr/bin/redfishtool", words);
        EXPECT_EQ(ended.ExitStatus(), 0) << ended.out << ended.err;
        return Json::parse(ended.out, nullptr, false);
    }

    [[nodiscard]] const inventory::Server& Server() const { return m_Board->snapshot->TheServer(); }

    static std::string Kept(const testsupport::TempFolder& folder, const std::string& xml) {
        folder.Write("document.xml", xml);
        return folder / "document.xml";
    }

    testsupport::TempFolder m_Folder;
    std::shared_ptr<board::Board> m_Board;
    std::string m_Document;
    RunningServer m_Server;
};

void ExpectDrive(const Json& seen, const inventory::Drive& drive) {
    EXPECT_TRUE(seen["name"].get<std::string>().starts_with(drive.number + " ")) << seen;
    EXPECT_EQ(seen["model"], drive.product);
    EXPECT_EQ(seen["serial"], drive.serial);
    EXPECT_EQ(seen["bytes"], inventory::BytesFrom(drive.capacity).value());
    const bool isKnown =
        drive.interfaceType == "SAS" || drive.interfaceType == "SATA" || drive.interfaceType == "NVMe";
    EXPECT_EQ(seen["protocol"], isKnown ? Json(drive.interfaceType) : Json()) << drive.number;
    EXPECT_EQ(seen["health"] == "OK", drive.health == inventory::Level::Ok) << drive.number;
    const std::string volumes = seen["volumes"].empty() ? "" : seen["volumes"][0].get<std::string>();
    EXPECT_TRUE(drive.membership.starts_with(volumes)) << drive.number;
    EXPECT_EQ(volumes.empty(), !drive.membership.starts_with("LD")) << drive.number;
}

TEST_F(ClientsTest, SushySeesWhatTheDocumentTells) {
    const testsupport::Ended ended =
        Run("/usr/bin/python3", {REDFISH_TEST_FOLDER "/walk.py", m_Server.Url(), "monitoring", "secret"});
    ASSERT_EQ(ended.ExitStatus(), 0) << ended.err;
    const Json seen = Json::parse(ended.out);
    EXPECT_EQ(seen["host"], "storage7");
    EXPECT_EQ(seen["health"], "Critical");
    EXPECT_EQ(seen["chassis"], Json({"Other"}));
    EXPECT_EQ(seen["events"], "EventService");
    ASSERT_EQ(seen["storage"].size(), Server().controllers.size());
    for (std::size_t each = 0; each < Server().controllers.size(); ++each) {
        const inventory::Controller& controller = Server().controllers[each];
        const Json& storage = seen["storage"][each];
        EXPECT_EQ(storage["controllers"],
                  Json({"Controller " + controller.number + " (" + controller.product + ")"}));
        ASSERT_EQ(storage["drives"].size(), controller.drives.size());
        for (std::size_t drive = 0; drive < controller.drives.size(); ++drive) {
            ExpectDrive(storage["drives"][drive], controller.drives[drive]);
        }
        std::size_t count = 0;
        for (const inventory::Group& group : controller.groups) {
            for (const inventory::LogicalDrive& drive : group.logicalDrives) {
                const Json& volume = storage["volumes"][count++];
                EXPECT_EQ(volume["id"], drive.number);
                EXPECT_EQ(volume["bytes"], inventory::BytesFrom(drive.capacity).value());
                EXPECT_EQ(volume["health"] == "OK", drive.health == inventory::Level::Ok) << drive.number;
            }
        }
        EXPECT_EQ(storage["volumes"].size(), count);
    }
}

TEST_F(ClientsTest, RedfishtoolSeesTheSystemAndWhatIsBelow) {
    EXPECT_EQ(Tool({"versions"}, "None"), Json({{"v1", "/redfish/v1/"}}));
    EXPECT_EQ(Tool({"root"}, "None")["Id"], "RootService");
    EXPECT_EQ(Tool({"Systems", "-I", "1", "get"})["Status"]["Health"], "Critical");
    EXPECT_EQ(Tool({"Systems", "-1", "Logs", "-i", "Events", "-E"})["Members@odata.count"], 7);
    const inventory::Drive& drive = Server().controllers[1].drives[3];
    EXPECT_EQ(Tool({"raw", "GET", "/redfish/v1/Systems/1/Storage/1/Drives/32-3"})["SerialNumber"],
              drive.serial);
    EXPECT_EQ(
        Tool(
            {"raw", "GET",
             "/redfish/v1/Systems/1/Storage/1/Volumes?$expand=.&$select=RAIDType"})["Members"][0]["RAIDType"],
        "RAID6");
}

TEST_F(ClientsTest, RedfishtoolOpensASession) {
    EXPECT_EQ(Tool({"Chassis", "-1", "get"}, "Session")["ChassisType"], "Other");
    EXPECT_EQ(Tool({"SessionService", "login"})["SessionLocation"], "/redfish/v1/SessionService/Sessions/s2");
}

TEST_F(ClientsTest, RedfishtoolIsRefusedWithoutAnAccount) {
    const testsupport::Ended ended = Run("/usr/bin/redfishtool", {"-r", m_Server.Host(), "-S", "Never", "-A",
                                                                  "None", "-ss", "Systems", "-1", "get"});
    EXPECT_NE(ended.ExitStatus(), 0);
    EXPECT_NE(ended.err.find("401"), std::string::npos) << ended.err;
}

}  // namespace
}  // namespace redfish::test
