#pragma once

#include <string>

namespace redfish::test {

// Documents written by hand. Texts are not escaped.

[[nodiscard]] inline std::string Item(const std::string& name, const std::string& value) {
    return "<Item Name=\"" + name + "\" Value=\"" + value + "\" Valid=\"TRUE\"/>";
}

[[nodiscard]] inline std::string Parent(const std::string& name, const std::string& items) {
    return "<Item Name=\"" + name + "\" Valid=\"TRUE\">" + items + "</Item>";
}

[[nodiscard]] inline std::string DocumentWith(const std::string& items) {
    return "<RAID version=\"1\">" + items + "</RAID>";
}

[[nodiscard]] inline std::string ControllerXml(const std::string& number) {
    return Parent("Controller Information",
                  Parent("### General Information ###", Item("Controller No.", number)));
}

/// A drive with these general keys; without a slot where that is empty.
[[nodiscard]] inline std::string DriveXml(const std::string& enclosure, const std::string& slot,
                                          const std::string& keys = "") {
    const std::string place = (enclosure.empty() ? "" : Item("Enclosure No.", enclosure)) +
                              (slot.empty() ? "" : Item("Slot No.", slot));
    return Parent("Physical Drive Information",
                  Parent("### General Information ###", keys) +
                      Parent("### Enclosure Properties Information ###", place));
}

}  // namespace redfish::test
