#pragma once

#include "inventory/Document.h"

#include <string>
#include <utility>
#include <vector>

namespace inventory::test {

/// Documents as the conversion library writes them, put together from short words.

[[nodiscard]] inline std::string Key(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + name + "\" Value=\"" + value + "\" Valid=\"TRUE\"/>";
}

[[nodiscard]] inline std::string Placeholder(const std::string& name) {
    return "<Item Name=\"" + name + "\" Value=\"\" Valid=\"FALSE\"/>";
}

[[nodiscard]] inline std::string Node(const std::string& name, const std::string& children) {
    return "<Item Name=\"" + name + "\" Valid=\"TRUE\">" + children + "</Item>";
}

[[nodiscard]] inline std::string General(const std::string& keys) {
    return Node("### General Information ###", keys);
}

[[nodiscard]] inline std::string ControllerItem(const std::string& number, const std::string& more = "") {
    return Node("Controller Information",
                General(Key("Controller No.", number) + Key("Product Name", "Gate") + more) +
                    Node("### Controller Settings Information ###", Key("Rebuild Rate", "30 %")));
}

[[nodiscard]] inline std::string LogicalDriveItem(const std::string& number, const std::string& state) {
    return Node("LD List", Key("LD No.", number) + Key("State", state));
}

[[nodiscard]] inline std::string MemberItem(const std::string& number) {
    return Node("PD List",
                Key("PD No.", number) + Key("Enclosure No.", "252") + Key("Slot No.", number.substr(2)));
}

/// `members` are their numbers: {"PD0", "PD1"}.
[[nodiscard]] inline std::string GroupItem(const std::string& number, const std::string& logicalDrives,
                                           const std::vector<std::string>& members = {},
                                           const std::string& level = "RAID 5") {
    std::string list;
    for (const std::string& member : members) {
        list += MemberItem(member);
    }
    return Node("Logical Drive Information",
                list +
                    General(Key("RG No.", number) + Key("RAID Level", level) + logicalDrives +
                            Key("# of PD", std::to_string(members.size()))) +
                    Node("### LD Settings Information ###", Key("Read Policy", "Normal")));
}

[[nodiscard]] inline std::string DriveItem(const std::string& number, const std::string& status,
                                           const std::string& detail, const std::string& more = "",
                                           const std::string& group = "RG0",
                                           const std::string& membership = "LD0") {
    return Node("Physical Drive Information",
                General(Key("PD No.", number) + Key("RG No.", group) + Key("LD No.", membership) +
                        Key("PD Status", status) + Key("PD Status(Detail)", detail) + more) +
                    Node("### Enclosure Properties Information ###", Placeholder("Enclosure ID") +
                                                                         Key("Enclosure No.", "252") +
                                                                         Key("Slot No.", number.substr(2))));
}

[[nodiscard]] inline std::string Xml(const std::string& items) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RAID version=\"1\">" + items + "</RAID>\n";
}

[[nodiscard]] inline Document Read(const std::string& items) {
    return Document::Read(Xml(items));
}

}  // namespace inventory::test
