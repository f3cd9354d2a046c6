#include "Tables.h"

#include "basics/Words.h"

#include <algorithm>

namespace redfish {
namespace {

// Redfish has no word for what nobody knows. Left out, it would be taken for nothing to worry about, also
// where clients roll up; and something unknown never makes a server OK.
constexpr Translation kTranslations[] = {
    {Property::Health, "OK", "OK"},
    {Property::Health, "UNKNOWN", "Warning"},
    {Property::Health, "WARNING", "Warning"},
    {Property::Health, "CRITICAL", "Critical"},

    {Property::DriveState, "ONLINE", "Enabled"},
    {Property::DriveState, "REBUILD", "Enabled"},
    {Property::DriveState, "COPYBACK", "Enabled"},
    {Property::DriveState, "HOT SPARE", "StandbySpare"},
    {Property::DriveState, "Unconfig GOOD", "StandbyOffline"},
    {Property::DriveState, "Unconfig BAD", "UnavailableOffline"},
    {Property::DriveState, "OFFLINE", "UnavailableOffline"},
    {Property::DriveState, "FAILED", "UnavailableOffline"},
    {Property::DriveState, "ERROR", "UnavailableOffline"},
    {Property::DriveOperation, "REBUILD", "Rebuild"},

    {Property::VolumeState, "OPTIMAL", "Enabled"},
    {Property::VolumeState, "PARTIALLY DEGRADED", "Degraded"},
    {Property::VolumeState, "DEGRADED", "Degraded"},
    {Property::VolumeState, "INITIALIZING", "Enabled"},
    {Property::VolumeState, "RECONSTRUCTION", "Updating"},
    {Property::VolumeState, "OFFLINE", "UnavailableOffline"},
    {Property::VolumeState, "FAILED", "UnavailableOffline"},
    {Property::VolumeOperation, "INITIALIZING", "Initialize"},

    {Property::ControllerState, "", "Enabled"},
    {Property::ControllerState, "OK", "Enabled"},
    {Property::ControllerState, "Optimal", "Enabled"},
    {Property::ControllerState, "Needs Attention", "Enabled"},
    {Property::ControllerState, "Warning", "Enabled"},
    {Property::ControllerState, "Error", "Enabled"},
    {Property::ControllerState, "Critical", "Enabled"},
    {Property::ControllerState, "Degraded", "Degraded"},
    {Property::ControllerState, "Failed", "UnavailableOffline"},

    {Property::HotspareType, "GHS", "Global"},
    {Property::HotspareType, "DHS", "Dedicated"},
    {Property::HotspareType, "RLD", "None"},
    {Property::HotspareType, "None", "None"},

    {Property::Protocol, "SAS", "SAS"},
    {Property::Protocol, "SATA", "SATA"},
    {Property::Protocol, "NVMe", "NVMe"},
    {Property::MediaType, "HDD", "HDD"},
    {Property::MediaType, "SSD", "SSD"},

    {Property::RaidType, "RAID 0", "RAID0"},
    {Property::RaidType, "RAID 1", "RAID1"},
    {Property::RaidType, "RAID 5", "RAID5"},
    {Property::RaidType, "RAID 6", "RAID6"},
    {Property::RaidType, "RAID 10", "RAID10"},
    {Property::RaidType, "RAID 50", "RAID50"},
    {Property::RaidType, "RAID 60", "RAID60"},

    {Property::ReadCachePolicy, "Adaptive Read Ahead", "AdaptiveReadAhead"},
    {Property::ReadCachePolicy, "Read Ahead", "ReadAhead"},
    {Property::ReadCachePolicy, "No Read Ahead", "Off"},
    {Property::WriteCachePolicy, "Write Through", "WriteThrough"},
    {Property::WriteCachePolicy, "Write Back with BBU", "ProtectedWriteBack"},
    {Property::AccessCapabilities, "Read Write", "Read,Write"},
    {Property::AccessCapabilities, "Read Only", "Read"},
};

constexpr PropertyNames kPropertyNames[] = {
    {Property::Health, "`Status.Health`, `Severity`", "the level of docs/health.md"},
    {Property::DriveState, "Drive `Status.State`", "`PD Status(Detail)`, else `PD Status`"},
    {Property::DriveOperation, "Drive `Operations`", "the same"},
    {Property::VolumeState, "Volume `Status.State`", "`State` in `LD List`"},
    {Property::VolumeOperation, "Volume `Operations`",
     "the same; and `Rebuild` where a member is being rebuilt"},
    {Property::ControllerState, "StorageController `Status.State`", "`Controller Status`"},
    {Property::HotspareType, "Drive `HotspareType`",
     "`LD No.` of a drive; `None` where that is a logical drive"},
    {Property::Protocol, "Drive `Protocol`", "`Interface Type`"},
    {Property::MediaType, "Drive `MediaType`", "`Media Type`"},
    {Property::RaidType, "Volume `RAIDType`", "`RAID Level` of its group"},
    {Property::ReadCachePolicy, "Volume `ReadCachePolicy`", "`Read Policy` of its group"},
    {Property::WriteCachePolicy, "Volume `WriteCachePolicy`", "`Write Policy` of its group"},
    {Property::AccessCapabilities, "Volume `AccessCapabilities`", "`Access Policy` of its group"},
};

constexpr OemKey kOemKeys[] = {
    {"System", "Level", "Edm.String",
     "how well the server is, where `Health` has one word for unknown and warning"},
    {"System", "Headline", "Edm.String", "what its latest answer comes to: \"4 critical in 2 controllers\""},
    {"System", "AnswerTime", "Edm.DateTimeOffset", "when the server was asked for what is shown"},
    {"System", "WatchedSince", "Edm.DateTimeOffset", "when the service was started"},
    {"System", "AlarmCount", "Edm.Int64", "how much is not well; `Status.Conditions` has the first 100"},
    {"System", "LastInquiry", "Zorbalt.v1_0_0.Inquiry", "how the latest inquiry went"},
    {"Inquiry", "Time", "Edm.DateTimeOffset", "when it was"},
    {"Inquiry", "Failure", "Edm.String", "why there was no answer; what is shown is older then"},
    {"Inquiry", "FailuresInARow", "Edm.Int64", "how many inquiries have failed since the latest answer"},
    {"Controller", "Level", "Edm.String", "its level"},
    {"Controller", "Number", "Edm.String", "`Controller No.`"},
    {"Controller", "Status", "Edm.String", "`Controller Status`"},
    {"Controller", "HostInterface", "Edm.String",
     "`Host Interface`, which does not say whether it is in use"},
    {"Controller", "PciLocation", "Edm.String", "`PCI Location`"},
    {"Controller", "MemorySize", "Edm.String", "`Memory Size`, of which the cache is a part"},
    {"Controller", "BackupUnits", "Collection(Zorbalt.v1_0_0.BackupUnit)",
     "what keeps the cache over a loss of power, and other sections with a state"},
    {"BackupUnit", "Name", "Edm.String", "the title of its section"},
    {"BackupUnit", "Level", "Edm.String", "its level"},
    {"BackupUnit", "Presence", "Edm.String", "`BBU`, `FBU`"},
    {"BackupUnit", "Status", "Edm.String", "`Status`"},
    {"BackupUnit", "ReplacementRequired", "Edm.String", "`Replacement Required`"},
    {"Drive", "Level", "Edm.String", "its level"},
    {"Drive", "Number", "Edm.String", "`PD No.`"},
    {"Drive", "Enclosure", "Edm.String", "`Enclosure No.`"},
    {"Drive", "Slot", "Edm.String", "`Slot No.`"},
    {"Drive", "RaidGroup", "Edm.String", "`RG No.`"},
    {"Drive", "Membership", "Edm.String", "`LD No.`"},
    {"Drive", "Status", "Edm.String", "`PD Status`"},
    {"Drive", "StatusDetail", "Edm.String", "`PD Status(Detail)`"},
    {"Drive", "PowerStatus", "Edm.String", "`Power Status`"},
    {"Drive", "MediaErrorCount", "Edm.Int64", "`Media Error Count`"},
    {"Drive", "OtherErrorCount", "Edm.Int64", "`Other Error Count`"},
    {"Drive", "PredictiveFailureCount", "Edm.Int64", "`Predictive Failure Count`"},
    {"Drive", "SmartStatus", "Edm.String", "`SMART Status`"},
    {"Drive", "LinkSpeed", "Edm.String", "`Link Speed` that is not in Gb/s"},
    {"Drive", "Interface", "Edm.String", "`Interface Type` that is no `Protocol`"},
    {"Drive", "Media", "Edm.String", "`Media Type` that is no `MediaType`"},
    {"Volume", "Level", "Edm.String", "its level"},
    {"Volume", "Number", "Edm.String", "`LD No.`"},
    {"Volume", "State", "Edm.String", "`State`"},
    {"Volume", "RaidGroup", "Edm.String", "`RG No.`"},
    {"Volume", "RaidLevel", "Edm.String", "`RAID Level`"},
    {"Volume", "MemberCount", "Edm.Int64", "`# of PD`: how many drives there should be"},
    {"Volume", "StripeSize", "Edm.String", "`Stripe Size`, which does not say whether of a drive or of all"},
    {"Volume", "ReadPolicy", "Edm.String", "`Read Policy` that is no `ReadCachePolicy`"},
    {"Volume", "WritePolicy", "Edm.String", "`Write Policy` that is no `WriteCachePolicy`"},
    {"Volume", "AccessPolicy", "Edm.String", "`Access Policy` that is no `AccessCapabilities`"},
    {"Volume", "IoPolicy", "Edm.String", "`IO Policy`"},
    {"Volume", "DiskCache", "Edm.String", "`Disk Cache`"},
    {"Volume", "BackgroundInitialization", "Edm.String", "`Background Initialization`"},
};

}  // namespace

std::span<const Translation> Translations() {
    return kTranslations;
}

std::span<const PropertyNames> AllPropertyNames() {
    return kPropertyNames;
}

std::string_view Translate(Property property, std::string_view told) {
    const auto rows = Translations();
    const auto found = std::find_if(rows.begin(), rows.end(), [&](const Translation& row) {
        return row.property == property && basics::IsSameWord(row.told, told);
    });
    return found == rows.end() ? std::string_view() : found->value;
}

std::string_view HealthOf(inventory::Level level) {
    return Translate(Property::Health, inventory::NameOf(level));
}

std::span<const OemKey> OemKeys() {
    return kOemKeys;
}

}  // namespace redfish
