#include "Options.h"
#include "Resources.h"
#include "basics/Time.h"
#include "inventory/Health.h"

#include <algorithm>

namespace redfish {
namespace {

using inventory::Level;

std::vector<std::string> DrivePathsOf(const World& world) {
    std::vector<std::string> paths;
    for (const StoragePlace& storage : world.places.All()) {
        for (const DrivePlace& drive : storage.drives) {
            paths.push_back(drive.path);
        }
    }
    return paths;
}

/// Nothing is known of a server that has not answered yet, unless something else is wrong already.
Value SystemStatusOf(const World& world) {
    const bool isKnown = world.board->snapshot != nullptr;
    const Level level = LevelOf(*world.board);
    const std::string_view health = isKnown || level != Level::Unknown ? HealthOf(level) : std::string_view();
    Value status = StatusOf(isKnown ? "Enabled" : "Starting", health, health);
    constexpr std::size_t kMost = 100;
    Value conditions = Value::array();
    const std::vector<board::StandingAlarm>& alarms = world.board->alarms;
    for (std::size_t each = 0; each < std::min(alarms.size(), kMost); ++each) {
        conditions.push_back(MakeCondition(world, alarms[each]));
    }
    if (!conditions.empty()) {
        status["Conditions"] = std::move(conditions);
    }
    return status;
}

Value InquiryOf(const board::LastInquiry& inquiry) {
    Value value = {{"@odata.type", "#" + std::string(kOemNamespace) + ".Inquiry"},
                   {"Time", basics::UtcText(inquiry.at)}};
    Put(value, "Failure", inquiry.failure);
    value["FailuresInARow"] = inquiry.failuresInARow;
    return value;
}

Value SystemOemOf(const board::Board& board) {
    Value oem = {{"Level", inventory::NameOf(LevelOf(board))}};
    if (board.snapshot) {
        oem["Headline"] = Headline(board.snapshot->TheHealth());
        if (board.snapshot->takenAt) {
            oem["AnswerTime"] = basics::UtcText(*board.snapshot->takenAt);
        }
    }
    oem["WatchedSince"] = basics::UtcText(board.startedAt);
    oem["AlarmCount"] = board.alarms.size();
    if (board.inquiry) {
        oem["LastInquiry"] = InquiryOf(*board.inquiry);
    }
    return oem;
}

std::string ServerName(const World& world) {
    return world.board->host.empty() ? "Server" : world.board->host;
}

}  // namespace

Value StatusOf(std::string_view state, std::string_view health, std::string_view rollup) {
    Value status = Value::object();
    Put(status, "State", state);
    Put(status, "Health", health);
    Put(status, "HealthRollup", rollup);
    return status;
}

void PutOem(Value& object, std::string_view type, const Value& oem) {
    if (oem.empty()) {
        return;
    }
    Value ours = {{"@odata.type", "#" + std::string(kOemNamespace) + "." + std::string(type)}};
    ours.update(oem);
    object["Oem"][std::string(kOemName)] = std::move(ours);
}

void PutTranslated(Value& object, const char* key, Property property, const std::string& told, Value& oem,
                   const char* oemKey) {
    const std::string_view value = Translate(property, told);
    value.empty() ? Put(oem, oemKey, told) : Put(object, key, value);
}

std::string ToldIn(const inventory::Item* root, std::string_view title, std::string_view key) {
    if (root != nullptr) {
        for (const inventory::Item& section : ChildrenOf(*root)) {
            std::string value = section.name == title ? ValueOf(section, key) : "";
            if (!value.empty()) {
                return value;
            }
        }
    }
    return "";
}

Value MakeServiceRoot(const World& /*world*/, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path + "/", "RootService", "Root Service");
    value["RedfishVersion"] = "1.18.0";
    value["Product"] = "RAID provider";
    value["ProtocolFeaturesSupported"] = {{"ExcerptQuery", false},
                                          {"FilterQuery", false},
                                          {"OnlyMemberQuery", true},
                                          {"SelectQuery", true},
                                          {"TopSkipQuery", true},
                                          {"MultipleHTTPRequests", true},
                                          {"DeepOperations", {{"DeepPATCH", false}, {"DeepPOST", false}}},
                                          {"ExpandQuery",
                                           {{"ExpandAll", true},
                                            {"Links", true},
                                            {"NoLinks", true},
                                            {"Levels", true},
                                            {"MaxLevels", kMostLevels}}}};
    value["Systems"] = LinkTo(kSystemsPath);
    value["Chassis"] = LinkTo(kAllChassisPath);
    value["EventService"] = LinkTo(kEventServicePath);
    value["SessionService"] = LinkTo(kSessionServicePath);
    value["Registries"] = LinkTo(kRegistriesPath);
    value["Links"]["Sessions"] = LinkTo(kSessionsPath);
    return value;
}

Value MakeSystems(const World& /*world*/, const Subject& subject) {
    return Collection(subject.kind, subject.path, "Systems", {kSystemPath});
}

Value MakeSystem(const World& world, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, "1", ServerName(world));
    Put(value, "HostName", world.board->host);
    value["Status"] = SystemStatusOf(world);
    value["Storage"] = LinkTo(kStoragesPath);
    value["LogServices"] = LinkTo(kLogServicesPath);
    PutLinks(value["Links"], "Chassis", {kChassisPath});
    PutOem(value, "System", SystemOemOf(*world.board));
    return value;
}

Value MakeAllChassis(const World& /*world*/, const Subject& subject) {
    return Collection(subject.kind, subject.path, "Chassis", {kChassisPath});
}

// What it is built like is told nowhere: one that holds everything, of a type that no other word fits.
Value MakeChassis(const World& world, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, "1", ServerName(world));
    value["ChassisType"] = "Other";
    value["Drives"] = LinkTo(kChassisDrivesPath);
    std::vector<std::string> storages;
    for (const StoragePlace& storage : world.places.All()) {
        storages.push_back(storage.path);
    }
    Value& links = value["Links"];
    PutLinks(links, "ComputerSystems", {kSystemPath});
    PutLinks(links, "Storage", storages);
    PutLinks(links, "Drives", DrivePathsOf(world));
    return value;
}

Value MakeChassisDrives(const World& world, const Subject& subject) {
    return Collection(subject.kind, subject.path, "Drives", DrivePathsOf(world));
}

Value MakeSessionService(const World& /*world*/, const Subject& subject) {
    Value value = Resource(subject.kind, subject.path, "SessionService", "Session Service");
    value["ServiceEnabled"] = true;
    value["Sessions"] = LinkTo(kSessionsPath);
    return value;
}

}  // namespace redfish
