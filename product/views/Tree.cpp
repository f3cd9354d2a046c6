#include "basics/Text.h"
#include "views/Views.h"

namespace views {
namespace {

void Write(const inventory::Siblings& items, const std::string& indentation, std::string& text) {
    for (const inventory::Item& item : items) {
        text += indentation + basics::Printable(item.name);
        text += item.hasValue && !item.isPlaceholder ? " = " + basics::Printable(item.value) : "";
        text += item.isPlaceholder ? " (not in the report)" : "";
        text += item.lostParent.empty() ? "" : " (belongs to " + basics::Printable(item.lostParent) + ")";
        text += '\n';
        Write(inventory::ChildrenOf(item), indentation + "  ", text);
    }
}

}  // namespace

std::string Tree(const inventory::Snapshot& snapshot) {
    std::string text;
    Write(snapshot.Main().Roots(), "", text);
    for (const inventory::DriveAnswer& answer : snapshot.Answers()) {
        text += "Drive of controller " + basics::Printable(answer.controller) + ", enclosure " +
                basics::Printable(answer.enclosure) + ", slot " + basics::Printable(answer.slot) + '\n';
        Write(answer.document.Roots(), "  ", text);
    }
    return text.empty() ? "(no item)\n" : text;
}

}  // namespace views
