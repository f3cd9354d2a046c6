#include "Items.h"
#include "Scenarios.h"
#include "Tables.h"

#include <gmock/gmock.h>

#include <set>

namespace redfish::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

Json DriveWith(const std::string& keys, const std::string& more = "") {
    const Client client(BoardOfXml(DocumentWith(ControllerXml("0") + DriveXml("252", "4", keys + more))));
    return client.Get(kStorage + "/Drives/252-4");
}

Json DriveThatSays(const std::string& status, const std::string& detail) {
    return DriveWith(Item("PD Status", status) + (detail.empty() ? "" : Item("PD Status(Detail)", detail)));
}

TEST(Drives, TellWhatTheReportTells) {
    const Client client = ClientOf("large");
    const Json drive = client.Get(kStorage + "/Drives/252-4");
    EXPECT_EQ(drive["@odata.type"], "#Drive.v1_22_0.Drive");
    EXPECT_EQ(drive["Name"], "PD4 in enclosure 252 slot 4");
    EXPECT_EQ(drive["Model"], "TF600S15");
    EXPECT_EQ(drive["Manufacturer"], "TALLFIR");
    EXPECT_EQ(drive["SerialNumber"], "7K04025204C4");
    EXPECT_EQ(drive["FirmwareVersion"], "A31C");
    EXPECT_EQ(drive["Protocol"], "SAS");
    EXPECT_EQ(drive["MediaType"], "HDD");
    EXPECT_EQ(drive["CapacityBytes"], 599583876973) << "558.406 GB, each of 2^30";
    EXPECT_EQ(drive["NegotiatedSpeedGbs"], 12);
    EXPECT_EQ(drive["HotspareType"], "None");
    EXPECT_EQ(drive["FailurePredicted"], false);
    EXPECT_EQ(drive["Operations"], Json::parse(R"([{"Operation": "Rebuild"}])"));
    EXPECT_EQ(drive["PhysicalLocation"]["PartLocation"]["ServiceLabel"], "Enclosure 252 Slot 4");
    EXPECT_EQ(drive["PhysicalLocation"]["PartLocation"]["LocationOrdinalValue"], 4);
    EXPECT_EQ(drive["Oem"]["Zorbalt"]["MediaErrorCount"], 0);
    EXPECT_EQ(drive["Oem"]["Zorbalt"]["Membership"], "LD1,LD2");
    EXPECT_EQ(client.Get(drive["EnvironmentMetrics"]["@odata.id"])["TemperatureCelsius"]["Reading"], 35);
    EXPECT_THAT(PathsIn(drive["Links"]["Volumes"]),
                ElementsAre(kStorage + "/Volumes/LD1", kStorage + "/Volumes/LD2"));
}

TEST(Drives, LeaveOutWhatIsNotTold) {
    const Json drive = DriveWith("");
    std::set<std::string> keys;
    for (const auto& [key, value] : drive.items()) {
        keys.insert(key);
    }
    EXPECT_EQ(keys, (std::set<std::string>{"@odata.id", "@odata.type", "Id", "Links", "Name", "Oem",
                                           "PhysicalLocation", "Status"}));
    EXPECT_EQ(drive["Status"], Json({{"Health", "Warning"}})) << "no state is told, which is not well";
    EXPECT_EQ(drive["Oem"]["Zorbalt"]["Level"], "UNKNOWN");
}

TEST(Drives, HaveTheStateOfTheirReport) {
    EXPECT_EQ(DriveThatSays("NO ERROR", "ONLINE")["Status"]["State"], "Enabled");
    EXPECT_EQ(DriveThatSays("NO ERROR", "Hot Spare")["Status"]["State"], "StandbySpare");
    EXPECT_EQ(DriveThatSays("NO ERROR", "Unconfig GOOD")["Status"]["State"], "StandbyOffline");
    EXPECT_EQ(DriveThatSays("ERROR", "FAILED")["Status"]["State"], "UnavailableOffline");
    EXPECT_EQ(DriveThatSays("ERROR", "")["Status"]["State"], "UnavailableOffline");
    EXPECT_FALSE(DriveThatSays("NO ERROR", "Sleepy")["Status"].contains("State"));
}

TEST(Drives, PredictFailuresOnlyWhereSomebodyCounts) {
    EXPECT_EQ(DriveWith(Item("Predictive Failure Count", "2"))["FailurePredicted"], true);
    EXPECT_EQ(DriveWith(Item("Predictive Failure Count", "000"))["FailurePredicted"], false);
    EXPECT_FALSE(DriveWith(Item("Predictive Failure Count", "N/A")).contains("FailurePredicted"));
}

TEST(Drives, AreSparesOfAllOrOfOneGroup) {
    EXPECT_EQ(DriveWith(Item("LD No.", "GHS"))["HotspareType"], "Global");
    EXPECT_EQ(DriveWith(Item("LD No.", "DHS"))["HotspareType"], "Dedicated");
    EXPECT_EQ(DriveWith(Item("LD No.", "None"))["HotspareType"], "None");
    EXPECT_FALSE(DriveWith(Item("LD No.", "???")).contains("HotspareType"));
}

TEST(Drives, TellInOurOwnWordsWhatRedfishHasNoneFor) {
    const Json drive = DriveWith(Item("Interface Type", "SCSI") + Item("Media Type", "Drum") +
                                 Item("Link Speed", "8.0 GT/s") + Item("Power Status", "Stopped"));
    EXPECT_FALSE(drive.contains("Protocol"));
    EXPECT_FALSE(drive.contains("MediaType"));
    EXPECT_FALSE(drive.contains("NegotiatedSpeedGbs"));
    const Json& own = drive["Oem"]["Zorbalt"];
    EXPECT_EQ(own["@odata.type"], "#Zorbalt.v1_0_0.Drive");
    EXPECT_EQ(own["Interface"], "SCSI");
    EXPECT_EQ(own["Media"], "Drum");
    EXPECT_EQ(own["LinkSpeed"], "8.0 GT/s");
    EXPECT_EQ(own["PowerStatus"], "Stopped");
}

TEST(Drives, TellTheirHoursWhereSmartDataDo) {
    const std::string smart = Parent("### SMART Information ###",
                                     Item("Power-On Time", "20411 Hours") + Item("SMART Status", "Failed"));
    const std::string drive = DriveXml("252", "4");
    const std::string sections =
        drive.substr(0, drive.size() - std::string("</Item>").size()) + smart + "</Item>";
    const Client client(BoardOfXml(DocumentWith(ControllerXml("0") + sections)));
    const Json told = client.Get(kStorage + "/Drives/252-4");
    EXPECT_EQ(told["FailurePredicted"], true);
    EXPECT_EQ(told["Oem"]["Zorbalt"]["SmartStatus"], "Failed");
    EXPECT_EQ(client.Get(told["Metrics"]["@odata.id"])["PowerOnHours"], 20411);
}

TEST(Paths, AreOnesOwnWhateverDrivesAreCalled) {
    const std::vector<std::pair<std::string, std::string>> places = {{"252", "4"},
                                                                     {"252", "4"},
                                                                     {"252", "4-2"},
                                                                     {"", "7"},
                                                                     {"", ""},
                                                                     {"", ""},
                                                                     {"..", "/../x"},
                                                                     {".", "?a=b#c"},
                                                                     {"&#9;&quot;", "\xC3\xA9"},
                                                                     {std::string(5000, '9'), "1"}};
    std::string drives;
    for (const auto& [enclosure, slot] : places) {
        drives += DriveXml(enclosure, slot);
    }
    const Client client(BoardOfXml(DocumentWith(ControllerXml("0") + drives)));
    const std::vector<std::string> paths = PathsIn(client.Get(kStorage)["Drives"]);
    EXPECT_EQ(paths.size(), places.size());
    EXPECT_EQ(std::set<std::string>(paths.begin(), paths.end()).size(), places.size());
    for (const std::string& path : paths) {
        EXPECT_EQ(
            path.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./"),
            std::string::npos)
            << path;
        EXPECT_EQ(path.find("/."), std::string::npos) << path;
        EXPECT_LT(path.size(), 110U) << path;
        EXPECT_EQ(client.Get(path)["@odata.id"], path);
    }
}

TEST(Paths, StayTheSameWhenSomethingElseGoes) {
    const auto pathsOf = [](const std::string& drives) {
        const Client client(BoardOfXml(DocumentWith(ControllerXml("0") + drives)));
        return PathsIn(client.Get(kStorage)["Drives"]);
    };
    const std::string other = DriveXml("252", "5");
    EXPECT_THAT(pathsOf(DriveXml("252", "4") + other), Contains(kStorage + "/Drives/252-5"));
    EXPECT_THAT(pathsOf(other), ElementsAre(kStorage + "/Drives/252-5"));
}

TEST(Paths, AreOnesOwnForControllersWithoutNumbers) {
    const Client client(
        BoardOfXml(DocumentWith(ControllerXml("0") + ControllerXml("0") + ControllerXml(""))));
    EXPECT_THAT(PathsIn(client.Get("/redfish/v1/Systems/1/Storage")["Members"]),
                ElementsAre(kStorage, kStorage + "-2", std::string(kSystem) + "/Storage/controller"));
}

TEST(Volumes, TellTheirGroupAndItsDrives) {
    const Client client = ClientOf("large");
    const Json volume = client.Get(kStorage + "/Volumes/LD1");
    EXPECT_EQ(volume["DisplayName"], "DATA_01");
    EXPECT_EQ(volume["RAIDType"], "RAID5");
    EXPECT_EQ(volume["CapacityBytes"], 1073741824000);
    EXPECT_EQ(volume["Status"], Json::parse(R"({"State": "Degraded", "Health": "Warning"})"));
    EXPECT_EQ(volume["Operations"], Json::parse(R"([{"Operation": "Rebuild"}])"));
    EXPECT_EQ(volume["ReadCachePolicy"], "AdaptiveReadAhead");
    EXPECT_EQ(volume["WriteCachePolicy"], "ProtectedWriteBack");
    EXPECT_EQ(volume["Oem"]["Zorbalt"]["RaidGroup"], "RG1");
    const std::string drives = kStorage + "/Drives/";
    EXPECT_THAT(PathsIn(volume["Links"]["Drives"]),
                ElementsAre(drives + "252-2", drives + "252-3", drives + "252-4", drives + "252-5"));
    EXPECT_EQ(volume["Links"]["CacheVolumeSource"]["@odata.id"], kStorage + "/Volumes/LD3");
    const Json cache = client.Get(kStorage + "/Volumes/LD3");
    EXPECT_EQ(cache["VolumeUsage"], "CacheOnly");
    EXPECT_EQ(cache["AccessCapabilities"], Json({"Read"}));
    EXPECT_FALSE(client.Get(kStorage + "/Volumes/LD5").contains("DisplayName")) << "it has no name";
}

TEST(Controllers, TellWhatTheyAre) {
    const Client client = ClientOf("large");
    const Json controller = client.Get(kStorage + "/Controllers/0");
    EXPECT_EQ(controller["Model"], "Gate SR-8e");
    EXPECT_EQ(controller["SerialNumber"], "GS81000442");
    EXPECT_EQ(controller["CacheSummary"]["TotalCacheSizeMiB"], 1715);
    EXPECT_EQ(controller["ControllerRates"]["RebuildRatePercent"], 30);
    EXPECT_EQ(controller["Oem"]["Zorbalt"]["BackupUnits"][0]["Status"], "Optimal");
    const Json storage = client.Get(kStorage);
    EXPECT_EQ(storage["StorageControllers"][0]["Model"], "Gate SR-8e") << "for older clients";
    EXPECT_EQ(storage["Status"]["Health"], "OK") << "the controller itself";
    EXPECT_EQ(storage["Status"]["HealthRollup"], "Critical") << "what belongs to it";
    EXPECT_EQ(storage["Drives@odata.count"], 15);
}

TEST(Controllers, AreNotThereWhereNoneTellsOfItself) {
    const Client client(BoardOfXml(DocumentWith(DriveXml("252", "4"))));
    const std::string storage = std::string(kSystem) + "/Storage/controller";
    EXPECT_FALSE(client.Get(storage).contains("StorageControllers"));
    EXPECT_THAT(client.Get(storage + "/Controllers")["Members"], IsEmpty());
}

TEST(TheSystem, IsAsWellAsTheWorstOfIt) {
    EXPECT_EQ(ClientOf("small").Get(kSystem)["Status"]["Health"], "OK");
    const Json system = ClientOf("large").Get(kSystem);
    EXPECT_EQ(system["Status"]["Health"], "Critical");
    EXPECT_EQ(system["Status"]["State"], "Enabled");
    EXPECT_EQ(system["HostName"], "storage7");
    const Json& condition = system["Status"]["Conditions"][0];
    EXPECT_EQ(condition["Severity"], "Critical");
    EXPECT_EQ(condition["OriginOfCondition"]["@odata.id"], kStorage + "/Drives/16-5");
    EXPECT_EQ(system["Oem"]["Zorbalt"]["AlarmCount"], system["Status"]["Conditions"].size());
}

TEST(TheSystem, IsNeverWellWhereSomethingIsUnknown) {
    const Json system = ClientOf("empty").Get(kSystem);
    EXPECT_EQ(system["Status"]["Health"], "Warning");
    EXPECT_EQ(system["Oem"]["Zorbalt"]["Level"], "UNKNOWN");
}

TEST(TheSystem, IsNotCalledWellWhileItCannotBeAsked) {
    const std::shared_ptr<board::Board> board = BoardOfXml(DocumentOf("small"));
    EXPECT_EQ(Client(board).Get(kSystem)["Status"]["Health"], "OK");
    board->inquiry = {.at = board->startedAt, .failure = "the tool hung", .failuresInARow = 1};
    EXPECT_EQ(Client(board).Get(kSystem)["Status"]["Health"], "Warning");
    EXPECT_EQ(Client(board).Get(kSystem)["Oem"]["Zorbalt"]["Level"], "UNKNOWN");
}

TEST(TheSystem, IsStartingBeforeTheFirstAnswer) {
    const std::shared_ptr<board::Board> board = EmptyBoard();
    board->inquiry = {.at = board->startedAt, .failure = "no tool", .failuresInARow = 2};
    const Client client(board);
    const Json system = client.Get(kSystem);
    EXPECT_EQ(system["Status"], Json({{"State", "Starting"}})) << "no health is made up";
    EXPECT_EQ(system["Oem"]["Zorbalt"]["LastInquiry"]["Failure"], "no tool");
    EXPECT_THAT(client.Get("/redfish/v1/Systems/1/Storage")["Members"], IsEmpty());
    EXPECT_THAT(client.Get("/redfish/v1/Chassis/1/Drives")["Members"], IsEmpty());
}

TEST(TheSystem, HasTheAlarmsOfWhatIsGoneAndOfWhatCannotBeAsked) {
    const std::shared_ptr<board::Board> board = EmptyBoard();
    inventory::Finding finding{.level = inventory::Level::Critical, .part = "PD9"};
    board->alarms = {{board->startedAt, finding}};
    const Json status = Client(board).Get(kSystem)["Status"];
    EXPECT_EQ(status["Health"], "Critical");
    EXPECT_FALSE(status["Conditions"][0].contains("OriginOfCondition"));
}

TEST(TheSystem, ListsAHundredAlarmsAndCountsTheRest) {
    const std::shared_ptr<board::Board> board = EmptyBoard();
    board->alarms.assign(5000, {board->startedAt, {.level = inventory::Level::Warning, .part = "PD9"}});
    const Json system = Client(board).Get(kSystem);
    EXPECT_EQ(system["Status"]["Conditions"].size(), 100U);
    EXPECT_EQ(system["Oem"]["Zorbalt"]["AlarmCount"], 5000);
}

TEST(Controllers, RollUpWhatIsGone) {
    const std::shared_ptr<board::Board> board = BoardOfXml(DocumentOf("small"));
    EXPECT_EQ(Client(board).Get(kStorage)["Status"]["HealthRollup"], "OK");
    inventory::Finding pulled{.level = inventory::Level::Warning, .controller = "1", .part = "PD9"};
    board->alarms = {{board->startedAt, pulled}};
    EXPECT_EQ(Client(board).Get(kStorage)["Status"]["HealthRollup"], "OK") << "of another controller";
    board->alarms.front().finding.controller = "0";
    const Json status = Client(board).Get(kStorage)["Status"];
    EXPECT_EQ(status["HealthRollup"], "Warning");
    EXPECT_EQ(status["Health"], "OK");
}

TEST(TheChassis, HasAllDrives) {
    const Client client = ClientOf("large");
    EXPECT_EQ(client.Get("/redfish/v1/Chassis/1/Drives")["Members@odata.count"], 26);
    EXPECT_EQ(client.Get("/redfish/v1/Chassis/1")["Links"]["Drives"].size(), 26U);
}

void CollectOem(const Json& value, std::set<std::string>& keys) {
    if (value.is_object() && value.contains("@odata.type") && value["@odata.type"].is_string()) {
        const std::string type = value["@odata.type"];
        const std::string ours = "#" + std::string(kOemNamespace) + ".";
        for (const auto& [key, part] : value.items()) {
            if (type.starts_with(ours) && key != "@odata.type") {
                keys.insert(type.substr(ours.size()) + "." + key);
            }
        }
    }
    if (value.is_structured()) {
        for (const Json& part : value) {
            CollectOem(part, keys);
        }
    }
}

TEST(OurOwnKeys, AreThoseOfTheTable) {
    std::set<std::string> known;
    for (const OemKey& key : OemKeys()) {
        known.insert(std::string(key.type) + "." + std::string(key.key));
    }
    std::set<std::string> seen;
    for (const char* const scenario : {"awkward", "large", "old"}) {
        const Client client = ClientOf(scenario);
        CollectOem(client.Get("/redfish/v1/Systems", {{"$expand", ".($levels=6)"}}), seen);
    }
    EXPECT_GT(seen.size(), 30U);
    for (const std::string& key : seen) {
        EXPECT_TRUE(known.contains(key)) << key;
    }
}

}  // namespace
}  // namespace redfish::test
