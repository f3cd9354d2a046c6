#include "Labels.h"

#include "inventory/Server.h"

#include <string_view>

namespace inventory {

std::string LabelOf(const Item& item) {
    constexpr std::string_view kBegin = "### ";
    constexpr std::string_view kEnd = " ###";
    std::string label = item.name.empty() ? "(no name)" : item.name;
    if (label.size() > kBegin.size() + kEnd.size() && label.starts_with(kBegin) && label.ends_with(kEnd)) {
        label = label.substr(kBegin.size(), label.size() - kBegin.size() - kEnd.size());
    }
    const auto add = [&](std::string_view key) {
        const std::string value = ValueOf(item, key);
        label += value.empty() ? "" : " " + value;
    };
    if (item.name.ends_with("List") || item.name.starts_with("Associated")) {
        add("LD No.");
        add("PD No.");
    } else if (item.name.starts_with("SMART Detail(")) {
        add("ID");
        add("Attribute");
    }
    return label;
}

}  // namespace inventory
