#include "watch/Event.h"

#include "basics/Time.h"
#include "inventory/Level.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace watch::test {
namespace {

using inventory::Level;

Event FailedDrive() {
    Event event;
    event.id = "20310405T060708Z-3f2a9c41";
    event.at = *basics::TimeFromUtcText("2031-04-05T06:07:08Z");
    event.kind = EventKind::Began;
    event.level = Level::Critical;
    event.about.kind = inventory::PartKind::Drive;
    event.about.level = Level::Critical;
    event.about.controller = "0";
    event.about.group = "RG1";
    event.about.part = "PD9";
    event.about.enclosure = "16";
    event.about.slot = "1";
    event.about.product = "TF600S15";
    event.about.serial = "7K00025200C4";
    event.about.what = "FAILED";
    event.words = "controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED";
    event.advice = "Replace it.";
    return event;
}

TEST(Event, IsALineForPeople) {
    EXPECT_EQ(Describe(FailedDrive()),
              "CRITICAL began: controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED");
}

TEST(Event, IsALineOfJsonForPrograms) {
    EXPECT_EQ(
        JsonOf(FailedDrive(), "storage7"),
        R"({"id":"20310405T060708Z-3f2a9c41","at":"2031-04-05T06:07:08Z","host":"storage7","kind":"began",)"
        R"("level":"CRITICAL","before":"OK","part_kind":"drive","rule":"state","controller":"0","group":"RG1",)"
        R"("part":"PD9","enclosure":"16","slot":"1","model":"TF600S15","serial":"7K00025200C4",)"
        R"("what":"FAILED","words":"controller 0, RG1, PD9 in enclosure 16 slot 1: FAILED",)"
        R"("advice":"Replace it."})");
}

TEST(Event, IsReadAsItIsWritten) {
    const std::string json = JsonOf(FailedDrive());
    const std::optional<Event> read = EventFrom(json);
    ASSERT_TRUE(read);
    EXPECT_EQ(JsonOf(*read), json);
    EXPECT_EQ(read->about.level, Level::Critical);
}

TEST(Event, OfAnyBytesIsText) {
    Event event = FailedDrive();
    event.words = "a\xFFz\n\"";
    EXPECT_EQ(EventFrom(JsonOf(event))->words, "a\xEF\xBF\xBDz\n\"");
}

TEST(Event, IsNothingForOtherTexts) {
    const std::string json = JsonOf(FailedDrive());
    const auto with = [&json](const std::string& old, const std::string& now) {
        std::string other = json;
        const std::size_t at = other.find(old);
        EXPECT_NE(at, std::string::npos) << old;
        return other.replace(at, old.size(), now);
    };
    for (const std::string& other :
         {std::string(), std::string("null"), std::string("[]"), std::string("{}"),
          json.substr(0, json.size() - 1), with("\"began\"", "\"begun\""), with("\"began\"", "7"),
          with("\"CRITICAL\"", "\"BAD\""), with("2031-04-05T", "2031-04-05 "), with("\"drive\"", "\"tape\""),
          with("\"state\"", "\"mood\""), with("\"20310405T060708Z-3f2a9c41\"", "\"\""),
          with("\"PD9\"", "9")}) {
        EXPECT_FALSE(EventFrom(other)) << other;
    }
}

TEST(Event, KindsHaveNames) {
    for (const EventKind kind :
         {EventKind::Started, EventKind::Began, EventKind::Changed, EventKind::Ended, EventKind::Reminder,
          EventKind::Came, EventKind::Went, EventKind::Moved, EventKind::Grew, EventKind::InquiryFailed,
          EventKind::Trouble, EventKind::Test}) {
        EXPECT_EQ(EventKindFrom(NameOf(kind)), kind);
    }
    EXPECT_FALSE(EventKindFrom("Began"));
}

TEST(Event, WeighsAsMuchAsWhatItEnds) {
    Event event = FailedDrive();
    EXPECT_EQ(WeightOf(event), Level::Critical);
    event.before = Level::Critical;
    event.level = Level::Ok;
    EXPECT_EQ(WeightOf(event), Level::Critical);
}

}  // namespace
}  // namespace watch::test
