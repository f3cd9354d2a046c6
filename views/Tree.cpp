#include "views/Text.h"
#include "views/Views.h"

namespace views {
namespace {

void Write(const inventory::Siblings& items, const std::string& indentation, std::string& text) {
    for (const inventory::Item& item : items) {
        text += indentation + Printable(item.name);
        text += item.hasValue && !item.isPlaceholder ? " = " + Printable(item.value) : "";
        text += item.isPlaceholder ? " (not in the report)" : "";
        text += item.lostParent.empty() ? "" : " (belongs to " + Printable(item.lostParent) + ")";
        text += '\n';
        Write(inventory::ChildrenOf(item), indentation + "  ", text);
    }
}

}  // namespace

std::string Tree(const inventory::Snapshot& snapshot) {
    std::string text;
    Write(snapshot.Main().Roots(), "", text);
    for (const inventory::DriveAnswer& answer : snapshot.Answers()) {
        text += "Drive of controller " + Printable(answer.controller) + ", enclosure " +
                Printable(answer.enclosure) + ", slot " + Printable(answer.slot) + '\n';
        Write(answer.document.Roots(), "  ", text);
    }
    return text.empty() ? "(no item)\n" : text;
}

}  // namespace views
