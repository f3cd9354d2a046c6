#include "Documents.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>

namespace views::test {
namespace {

using testsupport::TempFolder;
using Parsed = nlohmann::ordered_json;

/// What an independent validator says of a text; "" where it is content.
std::string Validate(const std::string& json) {
    const TempFolder folder;
    folder.Write("json", json);
    return Ask("check_json.py", {VIEWS_TEST_SCHEMA, folder / "json"});
}

class JsonOfScenario : public testing::TestWithParam<const char*> {};

TEST_P(JsonOfScenario, IsValidAndHoldsEveryItemOfTheDocument) {
    const TempFolder folder;
    folder.Write("xml", DocumentOf(GetParam()));
    folder.Write("json", Json(SnapshotOf(GetParam())));
    EXPECT_EQ(Ask("check_json.py", {VIEWS_TEST_SCHEMA, folder / "json", folder / "xml"}), "");
}

// Not the huge one: the validator would take a minute for it, and it has nothing that the others lack.
INSTANTIATE_TEST_SUITE_P(All, JsonOfScenario, testing::Values("awkward", "empty", "large", "old", "small"),
                         [](const auto& scenario) { return scenario.param; });

TEST(Json, HoldsEveryItemOfTheAnswersAboutDrives) {
    const TempFolder folder;
    std::vector<inventory::DriveAnswer> answers;
    std::vector<std::string> arguments = {VIEWS_TEST_SCHEMA, folder / "json", folder / "main.xml"};
    folder.Write("main.xml", DocumentOf("large"));
    for (const std::string slot : {"0", "1", "3"}) {
        const std::string xml = DocumentOf("large", {"0", "252", slot});
        folder.Write(slot + ".xml", xml);
        arguments.push_back(folder / (slot + ".xml"));
        answers.push_back({"0", "252", slot, inventory::Document::Read(xml)});
    }
    folder.Write("json",
                 Json(SnapshotWith(inventory::Document::Read(DocumentOf("large")), std::move(answers))));
    EXPECT_EQ(Ask("check_json.py", arguments), "");
}

TEST(Json, TellsThePartsInTheOrderOfTheDocumentAndJudgesThem) {
    const Parsed json = Parsed::parse(Json(SnapshotOf("large")));
    EXPECT_EQ(json["schema_version"], 2);
    EXPECT_EQ(json["taken_at"], "2031-04-05T06:07:08Z");
    EXPECT_EQ(json["health"]["level"], "CRITICAL");
    EXPECT_EQ(json["health"]["counts"]["drives"],
              json["controllers"][0]["drives"].size() + json["controllers"][1]["drives"].size());
    EXPECT_EQ(json["controllers"][0]["level"], "CRITICAL");
    EXPECT_EQ(json["controllers"][1]["level"], "OK");
    const Parsed& drive = json["controllers"][0]["drives"][0];
    EXPECT_EQ(drive["number"], "PD0");
    EXPECT_EQ(drive["group"], "RG0");
    EXPECT_EQ(drive["role"], "LD0");
    EXPECT_EQ(drive["level"], "OK");
    EXPECT_EQ(drive["statuses"], Parsed::array({"NO ERROR"}));
    std::vector<std::string> keys;
    for (const auto& [key, value] : json.items()) {
        keys.push_back(key);
    }
    EXPECT_THAT(keys, testing::ElementsAre("schema_version", "taken_at", "host", "health", "tool_runs",
                                           "controllers", "items", "drive_documents"));
}

TEST(Json, WhatWasNotToldIsNull) {
    const Parsed json = Parsed::parse(
        Json(SnapshotFrom(DriveXml("3", {ItemXml("RG No.", "-"), ItemXml("Vendor", ""),
                                         "<Item Name=\"Capacity\" Value=\"-\" Valid=\"FALSE\"/>"}))));
    const Parsed& drive = json["controllers"][0]["drives"][0];
    for (const char* const key : {"group", "vendor", "capacity", "serial", "smart"}) {
        EXPECT_TRUE(drive[key].is_null()) << key;
    }
    EXPECT_TRUE(json["controllers"][0]["product"].is_null());
    EXPECT_TRUE(json["tool_runs"].is_null());
}

TEST(Json, EmptyValueOfAnItemIsNotAMissingOne) {
    const Parsed json = Parsed::parse(Json(SnapshotFrom(
        "<Item Name=\"a\" Value=\"\" Valid=\"TRUE\"/><Item Name=\"b\" Valid=\"TRUE\" Parent=\"c\"/>"
        "<Item Name=\"d\" Value=\"e\" Valid=\"FALSE\"/>")));
    EXPECT_EQ(json["items"].dump(), R"([{"name":"a","value":"","valid":true,"items":[]},)"
                                    R"({"name":"b","value":null,"valid":true,"parent":"c","items":[]},)"
                                    R"({"name":"d","value":"e","valid":false,"items":[]}])");
}

TEST(Json, SmartKeysAndRowsStandWithTheDrive) {
    const std::string smart = ParentXml(
        "### SMART Information ###",
        {ItemXml("SMART Status", "OK"), ItemXml("Temperature", ""),
         ParentXml("SMART Detail(SATA)",
                   {ItemXml("ID", "5"), ItemXml("Attribute", "Reallocated"), ItemXml("Raw Data", "0")}),
         ParentXml("SMART Detail(SATA)", {ItemXml("ID", "9"), ItemXml("Attribute", "Power-On")})});
    const std::string text = Json(SnapshotFrom(DriveXml("3", {}, {smart})));
    EXPECT_EQ(Validate(text), "");
    EXPECT_EQ(Parsed::parse(text)["controllers"][0]["drives"][0]["smart"].dump(),
              R"-({"keys":[{"name":"SMART Status","value":"OK","number":null,"unit":null},)-"
              R"-({"name":"Temperature","value":null,"number":null,"unit":null}],)-"
              R"-("table":{"name":"SMART Detail(SATA)","columns":["ID","Attribute","Raw Data"],)-"
              R"-("rows":[["5","Reallocated","0"],["9","Power-On",null]],)-"
              R"-("numbers":[[5,null,0],[9,null,null]]}})-");
}

TEST(Json, ToolRunsAreToldWhereTheyWereWatched) {
    inventory::Snapshot snapshot = SnapshotFrom("");
    snapshot.runs = {7, 1, 4, std::chrono::duration<double>(1.5)};
    const std::string text = Json(snapshot);
    EXPECT_EQ(Validate(text), "");
    EXPECT_EQ(Parsed::parse(text)["tool_runs"].dump(),
              R"({"commands":7,"failures":1,"failed_runs":4,"duration_seconds":1.5})");
}

TEST(Json, AnyBytesMakeValidUtf8) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    std::vector<inventory::DriveAnswer> answers;
    answers.push_back({"0", bytes, "\xC3", inventory::Document::Read("<RAID version=\"1\"/>")});
    const std::string drive =
        DriveXml("\xED\xA0\x80", {ItemXml("Vendor", "\xFF\xC0\x80\"\\\x7F\xE2\x80\xA8")});
    const std::string text = Json(SnapshotWith(
        inventory::Document::Read("<RAID version=\"1\">" + drive + "</RAID>"), std::move(answers)));
    EXPECT_EQ(Validate(text), "");  // which reads it as strict UTF-8
    EXPECT_EQ(Parsed::parse(text)["drive_documents"][0]["slot"], "\xEF\xBF\xBD");
    EXPECT_EQ(text.back(), '\n');
}

TEST(Json, NumbersStandBesideTheReportsWords) {
    const Parsed json = Parsed::parse(Json(
        SnapshotFrom(DriveXml("1", {ItemXml("Capacity", "558.406 GB"), ItemXml("Temperature", "31 C"),
                                    ItemXml("Media Error Count", "12"), ItemXml("Other Error Count", "12 K"),
                                    ItemXml("Predictive Failure Count", "-")}))));
    const Parsed& drive = json["controllers"][0]["drives"][0];
    EXPECT_EQ(drive["capacity"], "558.406 GB");
    EXPECT_EQ(drive["capacity_bytes"], 599583876973ULL);
    EXPECT_EQ(drive["temperature_celsius"], 31.0);
    EXPECT_EQ(drive["media_errors"], 12);
    EXPECT_EQ(drive["media_errors_told"], "12");
    EXPECT_TRUE(drive["other_errors"].is_null());
    EXPECT_EQ(drive["other_errors_told"], "12 K");
    EXPECT_TRUE(drive["predictive_failures"].is_null());
}

TEST(Json, NumbersStandBesideTheWordsOfGroupsAndMembersToo) {
    const Parsed json = Parsed::parse(Json(SnapshotOf("small")));
    const Parsed& group = json["controllers"][0]["groups"][0];
    EXPECT_EQ(group["capacity"], "557.861 GB");
    EXPECT_EQ(group["capacity_bytes"], 598998687678ULL);
    EXPECT_EQ(group["logical_drives"][0]["capacity_bytes"], 598998687678ULL);
    EXPECT_EQ(group["members"][0]["capacity"], "558.406 GB");
    EXPECT_EQ(group["members"][0]["capacity_bytes"], 599583876973ULL);
}

TEST(Json, NumbersStandBesideTheWordsOfSmartData) {
    const std::string smart =
        ParentXml("### SMART Information ###",
                  {ItemXml("Temperature", "88 F"), ItemXml("Power-On Time", "20411 Hours"),
                   ItemXml("Wear", "12.5 %"), ItemXml("Version", "1.2.3"),
                   ParentXml("SMART Detail(SATA)", {ItemXml("Flag", "0032"), ItemXml("Value", "100"),
                                                    ItemXml("Raw Data", "000000000031"),
                                                    ItemXml("Read", "486.550"), ItemXml("State", "5/10")})});
    const std::string text = Json(SnapshotFrom(DriveXml("3", {}, {smart})));
    EXPECT_EQ(Validate(text), "");
    const Parsed told = Parsed::parse(text)["controllers"][0]["drives"][0]["smart"];
    EXPECT_EQ(told["table"]["numbers"].dump(), "[[null,100,31,486.55,null]]");
    std::vector<std::string> keys;
    for (const Parsed& key : told["keys"]) {
        keys.push_back(key["number"].dump() + " " + key["unit"].dump());
    }
    EXPECT_THAT(keys, testing::ElementsAre("88 \"F\"", "20411 \"Hours\"", "12.5 \"%\"", "null null"));
}

TEST(Json, TellsWhichServerItIs) {
    inventory::Snapshot snapshot = SnapshotOf("small");
    EXPECT_TRUE(Parsed::parse(Json(snapshot))["host"].is_null());
    snapshot.host = "storage7\n\"\xFF";
    EXPECT_EQ(Validate(Json(snapshot)), "");
    EXPECT_EQ(Parsed::parse(Json(snapshot))["host"], "storage7\n\"\xEF\xBF\xBD");
}

TEST(Json, LeavesTheItemsOutWhereItIsToBeCompact) {
    const inventory::Snapshot snapshot = SnapshotOf("large");
    Parsed compact = Parsed::parse(Json(snapshot, true));
    EXPECT_EQ(Validate(compact.dump()), "");
    EXPECT_TRUE(compact["items"].is_null());
    Parsed whole = Parsed::parse(Json(snapshot));
    compact["items"] = whole["items"];
    compact["drive_documents"] = whole["drive_documents"];
    EXPECT_EQ(compact, whole);
}

/// What jq answers, as an administrator would ask.
std::string AskJq(const std::string& question) {
    const TempFolder folder;
    inventory::Snapshot snapshot = SnapshotOf("large");
    snapshot.host = "storage7";
    folder.Write("raid.json", Json(snapshot));
    const testsupport::Command command{.words = {"-r", question, folder / "raid.json"},
                                       .program = "/usr/bin/jq"};
    const testsupport::Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    return ended.out;
}

TEST(Json, AnswersWhatAdministratorsAskWithJq) {
    EXPECT_EQ(AskJq(".controllers[].drives[] | select(.media_errors > 10) | .number"), "PD10\nPD12\n");
    EXPECT_EQ(AskJq(".controllers[].drives[] | select(.temperature_celsius > 1000) | .number"), "");
    EXPECT_EQ(AskJq("[.controllers[].drives[].capacity_bytes] | add > 1e13"), "true\n");
    EXPECT_EQ(AskJq(".health.findings[] | select(.level == \"CRITICAL\" and .serial != null) | .part"),
              "PD13\n");
    EXPECT_EQ(AskJq(".controllers[].drives[] | select(.level != \"OK\") | .serial"),
              "7K04025204C4\n7K1001602C4\nWMX121604\n7K1301605C4\n");
    EXPECT_EQ(
        AskJq("[.controllers[].drives[]] | max_by(.temperature_celsius) | .number, .temperature_celsius"),
        "PD7\n38\n");
    EXPECT_EQ(AskJq("[.controllers[].drives[].capacity_bytes] | add / 1e12 * 100 | floor / 100"), "20.19\n");
    EXPECT_EQ(AskJq("[.controllers[].groups[] | .members | map(.capacity_bytes) | add] | length"), "7\n");
    EXPECT_EQ(AskJq(".host + \": \" + .health.level"), "storage7: CRITICAL\n");
}

// Each one change to a view that the schema accepts.
struct Damage {
    const char* name;
    void (*work)(Parsed& json);
};

class BrokenJson : public testing::TestWithParam<Damage> {};

TEST_P(BrokenJson, IsRefusedByTheSchema) {
    Parsed json = Parsed::parse(Json(SnapshotOf("small")));
    const std::string whole = json.dump();
    GetParam().work(json);
    ASSERT_NE(json.dump(), whole);
    EXPECT_THAT(Validate(json.dump()), testing::HasSubstr("the schema refuses it"));
}

constexpr Damage kDamages[] = {
    {"MoreAtTheTop", [](Parsed& json) { json["more"] = 1; }},
    {"MoreInADrive", [](Parsed& json) { json["controllers"][0]["drives"][1]["more"] = "x"; }},
    {"MoreInAnItem", [](Parsed& json) { json["items"][0]["items"][0]["more"] = "x"; }},
    {"MoreInAMember", [](Parsed& json) { json["controllers"][0]["groups"][0]["members"][0]["more"] = ""; }},
    {"MoreInCounts", [](Parsed& json) { json["health"]["counts"]["more"] = 1; }},
    {"NoTime", [](Parsed& json) { json.erase("taken_at"); }},
    {"NoSerial", [](Parsed& json) { json["controllers"][0]["drives"][0].erase("serial"); }},
    {"NoItems", [](Parsed& json) { json["items"][0]["items"][0].erase("items"); }},
    {"NoHost", [](Parsed& json) { json.erase("host"); }},
    {"EmptyHost", [](Parsed& json) { json["host"] = ""; }},
    {"WordAsBytes",
     [](Parsed& json) { json["controllers"][0]["groups"][0]["members"][0]["capacity_bytes"] = "1"; }},
    {"OtherVersion", [](Parsed& json) { json["schema_version"] = 3; }},
    {"OtherLevel", [](Parsed& json) { json["controllers"][0]["groups"][0]["level"] = "GOOD"; }},
    {"EmptyInsteadOfNull", [](Parsed& json) { json["controllers"][0]["drives"][0]["vendor"] = ""; }},
    {"NumberAsValue", [](Parsed& json) { json["items"][0]["items"][0]["value"] = 1; }},
    {"WordAsFlag", [](Parsed& json) { json["items"][0]["valid"] = "TRUE"; }},
};

INSTANTIATE_TEST_SUITE_P(Each, BrokenJson, testing::ValuesIn(kDamages),
                         [](const auto& damage) { return damage.param.name; });

}  // namespace
}  // namespace views::test
