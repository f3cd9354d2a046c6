#include "HtmlHistory.h"
#include "HtmlParts.h"
#include "basics/Text.h"
#include "inventory/Smart.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace views::html {
namespace {

using inventory::Controller;
using inventory::Drive;
using inventory::Group;

constexpr std::string_view kNotTold = "\xE2\x80\x93";
constexpr std::size_t kMaxFindingsAtOnce = 20;
constexpr std::size_t kMaxOpenSmart = 2;
constexpr std::size_t kMaxNameWidth = 80;  // in a group
constexpr std::string_view kReplaced = "RLD";

/// A table in a box of its own, which scrolls by itself where the screen is narrow: by keyboard as well.
template <typename Columns>
Element AddTable(const std::string& name, const Columns& columns, Element page) {
    Element box =
        page.Add("div", {{"class", "scroll"}, {"role", "region"}, {"aria-label", name}, {"tabindex", "0"}});
    Element table = box.Add("table");
    Element titles = table.Add("thead").Add("tr");
    for (const auto& column : columns) {
        titles.Add("th", column, {{"scope", "col"}});
    }
    return table.Add("tbody");
}

void AddCell(std::string_view text, Element row) {
    row.Add("td", text.empty() ? kNotTold : text);
}

std::string NameOf(const Controller& controller) {
    return controller.number.empty() ? "the controller" : "controller " + controller.number;
}

void AddFinding(const inventory::Finding& finding, const Places& places, Element list) {
    const std::string anchor = places.AnchorOf(finding);
    const Look look = LookOf(finding);
    Element item = list.Add("li", {{"class", ClassOf(look)}});
    AddSign(look, item);
    Element words = item.Add("span").Add("b", finding.what).Text(" ");
    if (anchor.empty()) {
        words.Text(PlaceOf(finding));
    } else {
        words.Add("a", PlaceOf(finding), {{"href", "#" + anchor}});
    }
    if (const std::string identity = IdentityOf(finding); !identity.empty()) {
        words.Text(" ").Add("small", identity);
    }
    if (const std::string note = AcceptanceNoteOf(finding); !note.empty()) {
        words.Text(" ").Add("small", note);
    }
}

void AddLogicalDrives(const Controller& controller, const Group& group, const Places& places, Element page) {
    Element list = page.Add("ul", {{"class", "lds"}});
    for (const inventory::LogicalDrive& drive : group.logicalDrives) {
        const inventory::Level level = drive.health;
        Element item =
            list.Add("li", {{"class", ClassOf(level)}, {"id", places.AnchorOf(controller, group, drive)}});
        AddSign(level, item);
        item.Add("b", drive.number.empty() ? "logical drive" : drive.number).Text(" ");
        item.Text(basics::Shortened(basics::Printable(drive.name), kMaxNameWidth)).Text(" ");
        item.Add("span", drive.capacity, {{"class", "size"}}).Text(" ");
        item.Add("span", drive.state, {{"class", "state"}});
    }
    for (const inventory::LogicalDrive& cache : group.caches) {
        Element item = list.Add("li").Text("cache: ");
        item.Add("b", cache.number.empty() ? "logical drive" : cache.number).Text(" ");
        item.Text(basics::Shortened(basics::Printable(cache.name), kMaxNameWidth)).Text(" ");
        item.Add("span", cache.capacity, {{"class", "size"}}).Text(" ").Text(cache.state);
    }
}

void AddMembers(const Controller& controller, const Group& group, const Places& places, Element page) {
    Element list = page.Add("ul", {{"class", "members"}, {"aria-label", "Members of " + group.number}});
    for (const inventory::Member& member : group.members) {
        const Drive* const drive = DriveOf(controller, member);
        const std::string name = member.number.empty() ? "drive" : member.number;
        const Look look = drive == nullptr ? Look::Unknown : LookOf(*drive);
        Element item = list.Add("li", {{"class", ClassOf(look)}});
        AddSign(look, item);
        if (drive == nullptr) {
            item.Text(name);
        } else {
            item.Add("a", name, {{"href", "#" + places.AnchorOf(controller, *drive)}});
        }
    }
}

void AddGroup(const Controller& controller, const Group& group, const Places& places, Element page) {
    const inventory::Level level = group.health;
    Element section = page.Add("section", {{"class", "group " + std::string(ClassOf(level))},
                                           {"id", places.AnchorOf(controller, group)}});
    Element title = section.Add("h4");
    AddSign(level, title);
    Element note = title.Text(group.number.empty() ? "Group" : group.number).Text(" ").Add("small");
    note.Text(group.level).Text(group.level.empty() || group.capacity.empty() ? "" : ", ");
    note.Text(group.capacity);
    if (!group.logicalDrives.empty() || !group.caches.empty()) {
        AddLogicalDrives(controller, group, places, section);
    }
    if (!group.members.empty()) {
        AddMembers(controller, group, places, section);
    }
}

struct DriveColumn {
    std::string_view title;
    std::string (*value)(const Drive& drive);
};

constexpr DriveColumn kDriveColumns[] = {
    {"Enclosure", [](const Drive& drive) { return drive.enclosure; }},
    {"Slot", [](const Drive& drive) { return drive.slot; }},
    {"Model", [](const Drive& drive) { return drive.product; }},
    {"Serial number", [](const Drive& drive) { return drive.serial; }},
    {"Group", [](const Drive& drive) { return drive.group; }},
    {"Use", [](const Drive& drive) { return RoleOf(drive); }},
    {"Size", [](const Drive& drive) { return drive.capacity; }},
    {"Temperature", [](const Drive& drive) { return drive.temperature; }},
    {"Media errors", [](const Drive& drive) { return drive.mediaErrors; }},
    {"Other errors", [](const Drive& drive) { return drive.otherErrors; }},
    {"Predicted failures", [](const Drive& drive) { return drive.predictiveFailures; }},
    {"Type", [](const Drive& drive) { return TypeOf(drive); }},
    {"Power", [](const Drive& drive) { return drive.power; }},
    {"Vendor", [](const Drive& drive) { return drive.vendor; }},
    {"Firmware", [](const Drive& drive) { return drive.firmware; }},
};

/// Those columns that hold something; a server of years ago tells less.
std::vector<DriveColumn> ColumnsFor(const Controller& controller) {
    std::vector<DriveColumn> columns;
    for (const DriveColumn& column : kDriveColumns) {
        for (const Drive& drive : controller.drives) {
            if (!column.value(drive).empty()) {
                columns.push_back(column);
                break;
            }
        }
    }
    return columns;
}

void AddSmartTable(const inventory::Smart& smart, const std::string& name, Element page) {
    Element rows = AddTable(name, smart.columns, page);
    for (const std::vector<std::string>& cells : smart.rows) {
        Element row = rows.Add("tr");
        for (const std::string& cell : cells) {
            AddCell(cell, row);
        }
    }
}

void AddSmartOf(const Drive& drive, bool isOpen, Element page) {
    const inventory::Smart smart = SmartOf(drive);
    const std::string name = "SMART data of " + (drive.number.empty() ? "a drive" : drive.number);
    Element details = page.Add("details", {{"open", isOpen ? "open" : ""}}).Add("summary", name);
    Element facts = details.Add("dl");
    for (const auto& [key, value] : smart.keys) {
        facts.Add("div").Add("dt", key).Add("dd", value.empty() ? kNotTold : std::string_view(value));
    }
    if (!smart.tableName.empty()) {
        AddSmartTable(smart, name, details);
    }
}

}  // namespace

void AddFindings(const inventory::Health& health, const Places& places, Element page) {
    const auto add = [&](std::size_t first, std::size_t end, Element to) {
        Element list = to.Add("ul", {{"class", "findings"}});
        for (std::size_t index = first; index < end; ++index) {
            AddFinding(health.findings[index], places, list);
        }
    };
    const std::size_t count = health.findings.size();
    const std::size_t shown = std::min(count, kMaxFindingsAtOnce);
    page.Add("h2", "What needs attention");
    add(0, shown, page);
    if (shown < count) {
        add(shown, count,
            page.Add("details").Add("summary", "and " + std::to_string(count - shown) + " more"));
    }
}

void AddGroups(const Controller& controller, const Places& places, Element page) {
    Element list = page.Add("div", {{"class", "groups"}});
    for (const Group& group : controller.groups) {
        AddGroup(controller, group, places, list);
    }
}

void AddDrives(const Controller& controller, const Places& places, const DriveLinesOfPage& lines,
               Element page) {
    const std::vector<DriveColumn> columns = ColumnsFor(controller);
    std::vector<std::string> titles = {"Drive", "State"};
    for (const DriveColumn& column : columns) {
        titles.emplace_back(column.title);
    }
    const bool hasLines = lines.HasAny(controller);
    if (hasLines) {
        const std::vector<std::string> more = lines.Titles();
        titles.insert(titles.end(), more.begin(), more.end());
    }
    Element rows = AddTable("Drives of " + NameOf(controller), titles, page);
    for (const Drive& drive : controller.drives) {
        const Look look = LookOf(drive);
        Element row = rows.Add("tr", {{"class", ClassOf(look)}});
        row.Add("th", drive.number.empty() ? kNotTold : std::string_view(drive.number), {{"scope", "row"}});
        Element state = row.Add("td", {{"class", "state"}});
        AddSign(look, state);
        state.Text(places.StateOf(controller, drive));
        for (const DriveColumn& column : columns) {
            AddCell(column.value(drive), row);
        }
        if (hasLines) {
            lines.AddCells(drive, row);
        }
    }
    if (std::any_of(controller.drives.begin(), controller.drives.end(),
                    [](const Drive& drive) { return drive.membership == kReplaced; })) {
        page.Add("p", "RLD: another drive has taken the place of this one.", {{"class", "note"}});
    }
}

void AddSmart(const Controller& controller, Element page) {
    std::vector<const Drive*> drives;
    for (const Drive& drive : controller.drives) {
        if (drive.smart != nullptr) {
            drives.push_back(&drive);
        }
    }
    if (drives.empty()) {
        return;
    }
    page.Add("h3", "SMART data");
    for (const Drive* const drive : drives) {
        AddSmartOf(*drive, drives.size() <= kMaxOpenSmart, page);
    }
}

}  // namespace views::html
