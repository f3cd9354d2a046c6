#include "Client.h"
#include "Items.h"
#include "Kinds.h"

#include <gmock/gmock.h>

namespace redfish::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kEntries = std::string(kSystem) + "/LogServices/Events/Entries";
const std::string kStream = "/redfish/v1/EventService/SSE";
const std::string kDrives = kStorage + "/Drives/";

board::NumberedEvent About(const inventory::Finding& finding, std::int64_t number = 12) {
    watch::Event event;
    event.id = "e" + std::to_string(number);
    event.kind = watch::EventKind::Began;
    event.about = finding;
    event.level = finding.level;
    event.words = "controller 0, PD4: FAILED";
    return {number, event};
}

inventory::Finding DriveFinding(const std::string& slot, const std::string& serial) {
    return {.level = inventory::Level::Critical,
            .kind = inventory::PartKind::Drive,
            .controller = "0",
            .part = "PD4",
            .enclosure = "252",
            .slot = slot,
            .serial = serial};
}

std::shared_ptr<board::Board> TwoDrives() {
    return BoardOfXml(DocumentWith(ControllerXml("0") + DriveXml("252", "4", Item("Serial Number", "A1")) +
                                   DriveXml("252", "5", Item("Serial Number", "B2"))));
}

/// Where the entry of such a finding says that it began; "" nowhere.
std::string OriginOf(const inventory::Finding& finding) {
    const std::shared_ptr<board::Board> board = TwoDrives();
    board->events = {About(finding)};
    const Json entry = Client(board).Get(kEntries + "/12");
    return entry.contains("Links") ? entry["Links"]["OriginOfCondition"]["@odata.id"].get<std::string>() : "";
}

TEST(LogEntries, AreTheEventsOfTheWatch) {
    const std::shared_ptr<board::Board> board = TwoDrives();
    board->events = {About(DriveFinding("4", "A1"), 11), About(DriveFinding("4", "A1"), 12)};
    board->events.back().event.advice = "replace the drive";
    board->events.back().event.kind = watch::EventKind::Ended;
    board->events.back().event.level = inventory::Level::Ok;
    const Client client(board);
    EXPECT_THAT(PathsIn(client.Get(kEntries)["Members"]), ElementsAre(kEntries + "/11", kEntries + "/12"));
    const Json entry = client.Get(kEntries + "/12");
    EXPECT_EQ(entry["EntryType"], "Event");
    EXPECT_EQ(entry["Severity"], "OK");
    EXPECT_EQ(entry["Created"], "1970-01-01T00:00:00Z");
    EXPECT_EQ(entry["EventId"], "e12");
    EXPECT_EQ(entry["MessageId"], "Zorbalt.1.0.Ended");
    EXPECT_EQ(entry["Message"], "controller 0, PD4: FAILED");
    EXPECT_EQ(entry["Resolution"], "replace the drive");
    EXPECT_EQ(client.Get(kEntries + "/11")["Severity"], "Critical");
    EXPECT_EQ(client.Refusal(404, kEntries + "/13"), "ResourceMissingAtURI");
}

TEST(LogEntries, LeadToTheDriveWhereverItIsNow) {
    EXPECT_EQ(OriginOf(DriveFinding("4", "A1")), kDrives + "252-4");
    EXPECT_EQ(OriginOf(DriveFinding("4", "B2")), kDrives + "252-5") << "it has moved";
    EXPECT_EQ(OriginOf(DriveFinding("4", "C3")), "") << "it is gone, and another drive is in its slot";
    EXPECT_EQ(OriginOf(DriveFinding("4", "")), kDrives + "252-4");
    EXPECT_EQ(OriginOf(DriveFinding("4", "N/A")), kDrives + "252-4") << "that is no serial number";
    EXPECT_EQ(OriginOf(DriveFinding("6", "")), "");
    inventory::Finding elsewhere = DriveFinding("4", "A1");
    elsewhere.controller = "1";
    EXPECT_EQ(OriginOf(elsewhere), "");
    EXPECT_EQ(OriginOf({.kind = inventory::PartKind::Unit, .controller = "0"}),
              std::string(kSystem) + "/Storage/0/Controllers/0");
}

TEST(LogEntries, LeadNowhereWhereTwoDrivesClaimTheSlot) {
    const std::shared_ptr<board::Board> board =
        BoardOfXml(DocumentWith(ControllerXml("0") + DriveXml("252", "4") + DriveXml("252", "4")));
    board->events = {About(DriveFinding("4", ""))};
    EXPECT_FALSE(Client(board).Get(kEntries + "/12").contains("Links"));
}

TEST(Messages, AreInTheRegistry) {
    const Client client(EmptyBoard());
    const Json file = client.Get("/redfish/v1/Registries/Zorbalt");
    const Json registry = client.Get(file["Location"][0]["Uri"]);
    for (const EventNames& names : AllEventNames()) {
        const Json& message = registry["Messages"][std::string(names.key)];
        EXPECT_EQ(message["NumberOfArgs"], 1) << names.key;
        std::string word(NameOf(names.kind));  // "inquiry-failed"
        std::erase(word, '-');
        EXPECT_STRCASEEQ(word.c_str(), std::string(names.key).c_str());
    }
    EXPECT_EQ(registry["Messages"].size(), 12U);
    EXPECT_EQ(AllEventNames().size(), 12U);
}

TEST(TheStream, SendsEventsAsTheStandardHasThem) {
    const Client client(TwoDrives());
    const std::string text = client.service.StreamText(About(DriveFinding("5", "B2")));
    ASSERT_TRUE(text.starts_with("id: 12\ndata: {")) << text;
    ASSERT_TRUE(text.ends_with("}\n\n")) << text;
    const Json event = Json::parse(text.substr(std::string("id: 12\ndata: ").size()));
    EXPECT_EQ(event["@odata.type"], "#Event.v1_13_0.Event");
    const Json& record = event["Events"][0];
    EXPECT_EQ(record["EventType"], "StatusChange");
    EXPECT_EQ(record["MessageId"], "Zorbalt.1.0.Began");
    EXPECT_EQ(record["MessageSeverity"], "Critical");
    EXPECT_EQ(record["OriginOfCondition"]["@odata.id"], kDrives + "252-5");
}

TEST(TheStream, StaysOneEventWhateverTheWordsAre) {
    board::NumberedEvent event = About(DriveFinding("5", ""));
    event.event.words = "a\r\n\r\nid: 99\ndata: {}\n\n\xFF";
    const std::string text = Client(TwoDrives()).service.StreamText(event);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 3);
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST(TheStream, BeginsWithWhatWasMissed) {
    const std::shared_ptr<board::Board> board = TwoDrives();
    board->events = {About({}, 11), About({}, 12), About({}, 13)};
    const Client client(board);
    const http::Response stream = client.Ask(kStream, {}, "GET", "", {{"Last-Event-ID", "11"}});
    EXPECT_TRUE(stream.isStream);
    EXPECT_EQ(HeaderOf(stream, "Content-Type"), "text/event-stream");
    EXPECT_THAT(stream.Text(), testing::AllOf(HasSubstr("id: 12\n"), HasSubstr("id: 13\n")));
    EXPECT_EQ(stream.Text().find("id: 11\n"), std::string::npos);
    EXPECT_EQ(client.Ask(kStream).Text().find("id:"), std::string::npos) << "only what is to come";
    EXPECT_EQ(client.Ask(kStream, {}, "GET", "", {{"Last-Event-ID", "x"}}).Text().find("id:"),
              std::string::npos);
    EXPECT_EQ(client.Get("/redfish/v1/EventService")["ServerSentEventUri"], kStream);
    EXPECT_EQ(HeaderOf(client.Ask(kStream, {}, "POST"), "Allow"), "GET");
}

}  // namespace
}  // namespace redfish::test
