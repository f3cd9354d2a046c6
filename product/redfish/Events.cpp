#include "Kinds.h"
#include "Resources.h"
#include "basics/Time.h"

#include <algorithm>

namespace redfish {
namespace {

using watch::Event;
using watch::EventKind;

constexpr std::string_view kRegistry = "Zorbalt";
constexpr std::string_view kRegistryVersion = "1.0";

constexpr EventNames kEventNames[] = {
    {EventKind::Started, "Started", "Other", "The watch began."},
    {EventKind::Began, "Began", "StatusChange", "Something is not well."},
    {EventKind::Changed, "Changed", "StatusChange", "Something that is not well is so in another way."},
    {EventKind::Ended, "Ended", "StatusChange", "Something is well again, or accepted."},
    {EventKind::Reminder, "Reminder", "Alert", "Something is still critical."},
    {EventKind::Came, "Came", "ResourceAdded", "A part is new, or back."},
    {EventKind::Went, "Went", "ResourceRemoved", "A part is in no report any more."},
    {EventKind::Moved, "Moved", "ResourceUpdated", "A drive is in another slot."},
    {EventKind::Grew, "Grew", "Alert", "A counter grew faster than it may."},
    {EventKind::InquiryFailed, "InquiryFailed", "Other", "The server could not be asked, once."},
    {EventKind::Trouble, "Trouble", "Alert", "The watch itself has a trouble."},
    {EventKind::Test, "Test", "Other", "Somebody tries the channels."},
};

const EventNames& NamesOf(EventKind kind) {
    return *std::find_if(std::begin(kEventNames), std::end(kEventNames),
                         [kind](const EventNames& each) { return each.kind == kind; });
}

std::string MessageIdOf(EventKind kind) {
    return std::string(kRegistry) + "." + std::string(kRegistryVersion) + "." +
           std::string(NamesOf(kind).key);
}

/// What entries, events and conditions have in common.
void PutMessage(Value& value, EventKind kind, const std::string& words) {
    value["MessageId"] = MessageIdOf(kind);
    value["Message"] = words;
    value["MessageArgs"] = {words};
}

}  // namespace

std::span<const EventNames> AllEventNames() {
    return kEventNames;
}

std::string EntryPathOf(const board::NumberedEvent& event) {
    return kEntriesPath + ("/" + std::to_string(event.number));
}

Value MakeLogServices(const World& /*world*/, const Subject& subject) {
    return Collection(subject.kind, subject.path, "Log Services", {kLogPath});
}

Value MakeLog(const World& /*world*/, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, "Events", "Events of the watch");
    value["ServiceEnabled"] = true;
    value["LogEntryType"] = "Event";
    value["OverWritePolicy"] = "WrapsWhenFull";
    value["Entries"] = LinkTo(kEntriesPath);
    return value;
}

Value MakeEntries(const World& world, const Subject& subject) {
    std::vector<std::string> paths;
    for (const board::NumberedEvent& event : world.board->events) {
        paths.push_back(EntryPathOf(event));
    }
    return Collection(subject.kind, subject.path, "Entries", paths);
}

Value MakeEntry(const World& world, const Subject& subject) {
    const board::NumberedEvent& numbered = world.board->events[subject.part];
    const Event& event = numbered.event;
    Value value = Resource(subject.kind, subject.path, std::to_string(numbered.number),
                           "Event " + std::to_string(numbered.number));
    value["EntryType"] = "Event";
    value["Created"] = value["EventTimestamp"] = basics::UtcText(event.at);
    value["EventId"] = event.id;
    value["Severity"] = HealthOf(event.level);
    PutMessage(value, event.kind, event.words);
    Put(value, "Resolution", event.advice);
    if (const std::string origin = world.places.PathOf(event.about); !origin.empty()) {
        value["Links"]["OriginOfCondition"] = LinkTo(origin);
    }
    return value;
}

Value MakeEvent(const World& world, const board::NumberedEvent& numbered) {
    const Event& event = numbered.event;
    const std::string number = std::to_string(numbered.number);
    Value record = {{"MemberId", "0"},
                    {"EventType", NamesOf(event.kind).eventType},
                    {"EventId", event.id},
                    {"EventTimestamp", basics::UtcText(event.at)},
                    {"MessageSeverity", HealthOf(event.level)}};
    PutMessage(record, event.kind, event.words);
    Put(record, "Resolution", event.advice);
    if (const std::string origin = world.places.PathOf(event.about); !origin.empty()) {
        record["OriginOfCondition"] = LinkTo(origin);
    }
    Value value = {{"@odata.type", NameOf(Kind::Event)}, {"Id", number}, {"Name", "Event " + number}};
    value["Events@odata.count"] = 1;
    value["Events"].push_back(std::move(record));
    return value;
}

Value MakeCondition(const World& world, const board::StandingAlarm& alarm) {
    Value value = {{"Severity", HealthOf(alarm.finding.level)}, {"Timestamp", basics::UtcText(alarm.since)}};
    PutMessage(value, EventKind::Began, Describe(alarm.finding));
    if (const std::string origin = world.places.PathOf(alarm.finding); !origin.empty()) {
        value["OriginOfCondition"] = LinkTo(origin);
    }
    return value;
}

Value MakeEventService(const World& /*world*/, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, "EventService", "Event Service");
    value["ServiceEnabled"] = true;
    value["ServerSentEventUri"] = kStreamPath;
    value["EventFormatTypes"] = {"Event"};
    value["RegistryPrefixes"] = {kRegistry};
    value["SSEFilterPropertiesSupported"] = {{"EventFormatType", false},        {"MessageId", false},
                                             {"MetricReportDefinition", false}, {"OriginResource", false},
                                             {"RegistryPrefix", false},         {"ResourceType", false},
                                             {"SubordinateResources", false}};
    return value;
}

Value MakeRegistries(const World& /*world*/, const Subject& subject) {
    return Collection(subject.kind, subject.path, "Registries", {kRegistryPath});
}

Value MakeRegistryFile(const World& /*world*/, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, std::string(kRegistry), "Messages of the watch");
    value["Registry"] = std::string(kRegistry) + "." + std::string(kRegistryVersion);
    value["Languages"] = {"en"};
    value["Location"].push_back({{"Language", "en"}, {"Uri", kRegistryFilePath}});
    return value;
}

// How severe an event is stands in each; a message of the registry has to have one word.
Value MakeRegistry(const World& /*world*/, const Subject& subject) {
    const std::string version = std::string(kRegistryVersion) + ".0";
    Value value = {{"@odata.type", NameOf(subject.kind)},
                   {"Id", std::string(kRegistry) + "." + version},
                   {"Name", "Messages of the watch"},
                   {"Language", "en"},
                   {"RegistryPrefix", kRegistry},
                   {"RegistryVersion", version},
                   {"OwningEntity", kRegistry}};
    for (const EventNames& names : kEventNames) {
        value["Messages"][std::string(names.key)] = {
            {"Description", names.meaning},  {"Message", "%1"},   {"MessageSeverity", "Warning"},
            {"Severity", "Warning"},         {"NumberOfArgs", 1}, {"ParamTypes", {"string"}},
            {"Resolution", "See the event."}};
    }
    return value;
}

}  // namespace redfish
