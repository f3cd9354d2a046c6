#include "Documents.h"
#include "views/Views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace views::test {
namespace {

using testsupport::TempFolder;
using DiffJson = nlohmann::ordered_json;

/// The differences between two documents, written by hand.
inventory::Changes Compared(const std::string& before, const std::string& after, bool hasAll = false) {
    const auto read = [](const std::string& items) {
        return inventory::Document::Read("<RAID version=\"1\">" + items + "</RAID>");
    };
    return inventory::ChangesBetween(read(before), read(after), hasAll);
}

std::string DriveWith(const std::string& slot, const std::string& serial,
                      std::vector<std::string> keys = {}) {
    keys.push_back(ItemXml("Product ID", "TF600S15"));
    keys.push_back(ItemXml("Serial Number", serial));
    return DriveXml(slot, keys);
}

TEST(Differences, TellWhereADriveHasMoved) {
    EXPECT_EQ(Differences(Compared(
                  ControllerXml() + DriveWith("4", "7K04"),
                  ControllerXml() + DriveWith("7", "7K04", {ItemXml("PD Status(Detail)", "REBUILD")}))),
              "moved     controller 0, the drive in enclosure 252 slot 4 (TF600S15, serial number 7K04) -> "
              "controller 0, enclosure 252 slot 7\n"
              "changed   controller 0, the drive in enclosure 252 slot 7: General Information / PD "
              "Status(Detail): \"ONLINE\" -> \"REBUILD\"\n"
              "1 moved, 1 changed\n");
}

TEST(Differences, TellWhichDriveStandsForWhich) {
    EXPECT_EQ(
        Differences(Compared(ControllerXml() + DriveWith("4", "7K04"),
                             ControllerXml() + DriveXml("4", {ItemXml("Serial Number", "9X01")}))),
        "replaced  controller 0, the drive in enclosure 252 slot 4: TF600S15, serial number 7K04 -> serial "
        "number 9X01\n1 replaced\n");
}

TEST(Differences, NameTheDrivesThatCameAndWent) {
    EXPECT_EQ(
        Differences(Compared(ControllerXml() + DriveWith("4", "7K04"), ControllerXml() + DriveXml("5"))),
        "vanished  controller 0, the drive in enclosure 252 slot 4 (TF600S15, serial number 7K04)\n"
        "appeared  controller 0, the drive in enclosure 252 slot 5\n"
        "1 appeared, 1 vanished\n");
}

TEST(Differences, QuoteValuesAndNoPlaceholders) {
    const std::string placeholder = "<Item Name=\"Rate\" Value=\"\" Valid=\"FALSE\"/>";
    EXPECT_EQ(Differences(Compared(ControllerXml({placeholder, ItemXml("Old", "")}),
                                   ControllerXml({ItemXml("Rate", "30 %"), ItemXml("New", "x")}))),
              "changed   controller 0: General Information / Rate: (not told) -> \"30 %\"\n"
              "vanished  controller 0: General Information / Old: \"\"\n"
              "appeared  controller 0: General Information / New: \"x\"\n"
              "1 appeared, 1 vanished, 1 changed\n");
}

TEST(Differences, ShowNoCharactersThatSteerATerminal) {
    const std::string name = "Na\tme\xE2\x80\xAE";
    const std::string text = Differences(
        Compared(ControllerXml({ItemXml(name, "a")}), ControllerXml({ItemXml(name, "\xC2\x9B\n")})));
    EXPECT_EQ(text,
              "changed   controller 0: General Information / Na me\xEF\xBF\xBD: \"a\" -> \"\xEF\xBF\xBD \"\n"
              "1 changed\n");
}

TEST(Differences, SayWhatWasLeftOutWhereThatIsAll) {
    const auto controller = [](const std::string& degrees, const std::string& name) {
        return ControllerXml({ItemXml("Temperature", degrees), ItemXml("Key", name)});
    };
    EXPECT_EQ(Differences(Compared(controller("1 C", "x"), controller("1 C", "x"))), "no difference\n");
    EXPECT_EQ(Differences(Compared(controller("1 C", "x"), controller("2 C", "x"))),
              "no difference but in what always moves; --all shows it\n");
    EXPECT_EQ(Differences(Compared(controller("1 C", "wwn-0001"), controller("1 C", "wwn-0002"))),
              "no difference but in what is redacted; --all shows it\n");
    EXPECT_EQ(Differences(Compared(controller("1 C", "wwn-0001"), controller("2 C", "wwn-0002"))),
              "no difference but in what always moves or is redacted; --all shows it\n");
    EXPECT_EQ(Differences(Compared(controller("1 C", "x"), controller("2 C", "x"), true)),
              "changed   controller 0: General Information / Temperature: \"1 C\" -> \"2 C\"\n1 changed\n");
}

/// What an independent validator says; "" where it is content.
std::string ValidateDiff(const std::string& json) {
    const TempFolder folder;
    folder.Write("json", json);
    return Ask("check_json.py", {VIEWS_TEST_DIFF_SCHEMA, folder / "json"});
}

/// One change of every kind, and something left out for each reason.
std::string EveryKind() {
    const std::string before = ControllerXml({ItemXml("Rate", ""), ItemXml("Temperature", "1 C")}) +
                               DriveWith("1", "7K01") + DriveWith("2", "7K02") + DriveWith("3", "7K03") +
                               ItemXml("Notice", "wwn-0001");
    const std::string after = ControllerXml({ItemXml("Rate", "30 %"), ItemXml("Temperature", "2 C")}) +
                              DriveWith("1", "9X01") + DriveWith("4", "7K02") + DriveWith("5", "7K05") +
                              ItemXml("Notice", "wwn-0002");
    return DifferencesJson(Compared(before, after), {"old.xml", false}, {"my-server", true});
}

TEST(DifferencesJson, IsValid) {
    EXPECT_EQ(ValidateDiff(EveryKind()), "");
    EXPECT_EQ(ValidateDiff(DifferencesJson(Compared("", ""), {"-", false}, {"small", true})), "");
}

TEST(DifferencesJson, IsValidForScenarios) {
    for (const char* const before : {"awkward", "large", "old"}) {
        const inventory::Changes found =
            inventory::ChangesBetween(inventory::Document::Read(DocumentOf(before)),
                                      inventory::Document::Read(DocumentOf("small")), true);
        EXPECT_EQ(ValidateDiff(DifferencesJson(found, {before, true}, {"small", true})), "") << before;
    }
}

TEST(DifferencesJson, CountsWhatThereIsAndWhatWasLeftOut) {
    const DiffJson json = DiffJson::parse(EveryKind());
    EXPECT_EQ(json["before"].dump(), R"({"source":"old.xml","kind":"document"})");
    EXPECT_EQ(json["after"].dump(), R"({"source":"my-server","kind":"scenario"})");
    EXPECT_EQ(json["counts"].dump(), R"({"replaced":1,"moved":1,"appeared":1,"vanished":1,"changed":1,)"
                                     R"("left_out":{"movements":1,"redactions":1,"repetitions":3}})");
    EXPECT_EQ(json["changes"].size(), 5U);
}

TEST(DifferencesJson, TellsEachChangeOneByOne) {
    const DiffJson changes = DiffJson::parse(EveryKind())["changes"];
    EXPECT_EQ(changes[0].dump(),
              R"({"kind":"changed","place":"controller 0","controller":"0","group":null,"part":null,)"
              R"("enclosure":null,"slot":null,"model":null,"serial":null,"key":"General Information / Rate",)"
              R"("before":"","after":"30 %","from":null,"to":null})");
    EXPECT_EQ(changes[1]["kind"], "replaced");
    EXPECT_EQ(changes[1]["from"]["serial"], "7K01");
    EXPECT_EQ(changes[1]["to"]["serial"], "9X01");
    EXPECT_EQ(
        changes[2].dump(),
        R"({"kind":"moved","place":"controller 0, the drive in enclosure 252 slot 4","controller":"0",)"
        R"("group":null,"part":"PD4","enclosure":"252","slot":"4","model":"TF600S15","serial":"7K02",)"
        R"("key":null,"before":null,"after":null,)"
        R"("from":{"place":"controller 0, the drive in enclosure 252 slot 2","controller":"0","group":null,)"
        R"("part":"PD2","enclosure":"252","slot":"2","model":"TF600S15","serial":"7K02"},)"
        R"("to":{"place":"controller 0, the drive in enclosure 252 slot 4","controller":"0","group":null,)"
        R"("part":"PD4","enclosure":"252","slot":"4","model":"TF600S15","serial":"7K02"}})");
    EXPECT_EQ(changes[3]["kind"], "vanished");
    EXPECT_EQ(changes[3]["serial"], "7K03");
    EXPECT_EQ(changes[4]["kind"], "appeared");
    EXPECT_EQ(changes[4]["slot"], "5");
}

TEST(DifferencesJson, AnyBytesMakeValidUtf8) {
    const std::string text = DifferencesJson(Compared(ControllerXml({ItemXml("\xFF", "\xED\xA0\x80")}), ""),
                                             {"\xC3.xml", false}, {"-", false});
    EXPECT_EQ(ValidateDiff(text), "");
    EXPECT_EQ(DiffJson::parse(text)["before"]["source"], "\xEF\xBF\xBD.xml");
}

/// What jq answers about those.
std::string AskJqAboutChanges(const std::string& question) {
    const TempFolder folder;
    folder.Write("changes.json", EveryKind());
    const testsupport::Command command{.words = {"-r", question, folder / "changes.json"},
                                       .program = "/usr/bin/jq"};
    const testsupport::Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    return ended.out;
}

TEST(DifferencesJson, AnswersWhatAdministratorsAskWithJq) {
    EXPECT_EQ(AskJqAboutChanges(".changes[] | select(.key == null and .kind == \"vanished\" and .serial) | "
                                "[.place, .model, .serial] | @tsv"),
              "controller 0, the drive in enclosure 252 slot 3\tTF600S15\t7K03\n");
    EXPECT_EQ(AskJqAboutChanges(
                  ".changes[] | select(.kind == \"replaced\") | .from.serial + \" -> \" + .to.serial"),
              "7K01 -> 9X01\n");
    EXPECT_EQ(AskJqAboutChanges(".changes[] | select(.key // \"\" | endswith(\"Rate\")) | [.place, .before, "
                                ".after] | @tsv"),
              "controller 0\t\t30 %\n");
}

// Each one change to differences that the schema accepts.
struct DiffDamage {
    const char* name;
    void (*work)(DiffJson& json);
};

class BrokenDifferences : public testing::TestWithParam<DiffDamage> {};

TEST_P(BrokenDifferences, AreRefusedByTheSchema) {
    DiffJson json = DiffJson::parse(EveryKind());
    const std::string whole = json.dump();
    GetParam().work(json);
    ASSERT_NE(json.dump(), whole);
    EXPECT_THAT(ValidateDiff(json.dump()), testing::HasSubstr("the schema refuses it"));
}

constexpr DiffDamage kDiffDamages[] = {
    {"MoreAtTheTop", [](DiffJson& json) { json["more"] = 1; }},
    {"MoreInAChange", [](DiffJson& json) { json["changes"][0]["more"] = "x"; }},
    {"MoreInAPlace", [](DiffJson& json) { json["changes"][2]["to"]["more"] = "x"; }},
    {"MoreInASource", [](DiffJson& json) { json["before"]["more"] = "x"; }},
    {"NoCounts", [](DiffJson& json) { json.erase("counts"); }},
    {"NoKey", [](DiffJson& json) { json["changes"][0].erase("key"); }},
    {"NoLeftOut", [](DiffJson& json) { json["counts"].erase("left_out"); }},
    {"OtherVersion", [](DiffJson& json) { json["schema_version"] = 2; }},
    {"OtherKind", [](DiffJson& json) { json["changes"][0]["kind"] = "swapped"; }},
    {"OtherSource", [](DiffJson& json) { json["after"]["kind"] = "server"; }},
    {"MovedFromNowhere", [](DiffJson& json) { json["changes"][2]["from"] = nullptr; }},
    {"ChangedFromSomewhere", [](DiffJson& json) { json["changes"][0]["from"] = json["changes"][2]["from"]; }},
    {"EmptyInsteadOfNull", [](DiffJson& json) { json["changes"][0]["serial"] = ""; }},
    {"NumberAsValue", [](DiffJson& json) { json["changes"][0]["after"] = 30; }},
};

INSTANTIATE_TEST_SUITE_P(Each, BrokenDifferences, testing::ValuesIn(kDiffDamages),
                         [](const auto& damage) { return damage.param.name; });

}  // namespace
}  // namespace views::test
