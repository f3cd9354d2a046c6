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
constexpr std::size_t kMaxFindingsAtOnce = 40;
constexpr std::size_t kMaxOpenSmart = 2;
constexpr std::size_t kMaxNameWidth = 80;  // in a group

/// A table in a box of its own, which scrolls by itself where the screen is narrow: by keyboard as well.
template <typename Columns, typename Work>
void AddTable(const std::string& name, const Columns& columns, Markup& page, Work addRows) {
    page.In("div", {{"class", "scroll"}, {"role", "region"}, {"aria-label", name}, {"tabindex", "0"}}, [&] {
        page.In("table", {}, [&] {
            page.In("thead", {}, [&] {
                page.In("tr", {}, [&] {
                    for (const auto& column : columns) {
                        page.Element("th", column, {{"scope", "col"}});
                    }
                });
            });
            page.In("tbody", {}, addRows);
        });
    });
}

void AddCell(std::string_view text, Markup& page) {
    page.Element("td", text.empty() ? kNotTold : text);
}

std::string NameOf(const Controller& controller) {
    return controller.number.empty() ? "the controller" : "controller " + controller.number;
}

void AddFinding(const inventory::Finding& finding, const DrivePlaces& places, Markup& page) {
    const std::string anchor = places.AnchorOf(finding);
    page.In("li", {{"class", ClassOf(finding.level)}}, [&] {
        AddSign(finding.level, page);
        page.In("span", {}, [&] {
            page.Element("b", finding.what).Own(" ");
            if (anchor.empty()) {
                page.Text(PlaceOf(finding));
            } else {
                page.Element("a", PlaceOf(finding), {{"href", "#" + anchor}});
            }
        });
    });
}

void AddLogicalDrives(const Controller& controller, const Group& group, Markup& page) {
    page.In("ul", {{"class", "lds"}}, [&] {
        for (const inventory::LogicalDrive& drive : group.logicalDrives) {
            const inventory::Level level = LevelOf(controller, group, drive);
            page.In("li", {{"class", ClassOf(level)}}, [&] {
                AddSign(level, page);
                page.Element("b", drive.number.empty() ? "logical drive" : drive.number).Own(" ");
                page.Text(basics::Shortened(basics::Printable(drive.name), kMaxNameWidth)).Own(" ");
                page.Element("span", drive.capacity, {{"class", "size"}}).Own(" ");
                page.Element("span", drive.state, {{"class", "state"}});
            });
        }
        for (const inventory::LogicalDrive& cache : group.caches) {
            page.In("li", {}, [&] {
                page.Own("cache: ")
                    .Element("b", cache.number.empty() ? "logical drive" : cache.number)
                    .Own(" ");
                page.Text(basics::Shortened(basics::Printable(cache.name), kMaxNameWidth)).Own(" ");
                page.Element("span", cache.capacity, {{"class", "size"}}).Own(" ").Text(cache.state);
            });
        }
    });
}

void AddMembers(const Controller& controller, const Group& group, const DrivePlaces& places, Markup& page) {
    page.In("ul", {{"class", "members"}, {"aria-label", "Members of " + group.number}}, [&] {
        for (const inventory::Member& member : group.members) {
            const Drive* const drive = DriveOf(controller, member);
            const std::string name = member.number.empty() ? "drive" : member.number;
            page.In("li", {{"class", drive == nullptr ? "unknown" : ClassOf(LevelOf(*drive))}}, [&] {
                if (drive == nullptr) {
                    page.Text(name);
                    return;
                }
                AddSign(LevelOf(*drive), page);
                page.Element("a", name, {{"href", "#" + places.AnchorOf(controller, *drive)}});
            });
        }
    });
}

void AddGroup(const Controller& controller, const Group& group, const DrivePlaces& places, Markup& page) {
    const inventory::Level level = LevelOf(controller, group);
    page.In("section", {{"class", "group " + std::string(ClassOf(level))}}, [&] {
        page.In("h4", {}, [&] {
            AddSign(level, page);
            page.Text(group.number.empty() ? "Group" : group.number);
            page.Own(" ").In("small", {}, [&] {
                page.Text(group.level).Text(group.level.empty() || group.capacity.empty() ? "" : ", ");
                page.Text(group.capacity);
            });
        });
        if (!group.logicalDrives.empty() || !group.caches.empty()) {
            AddLogicalDrives(controller, group, page);
        }
        if (!group.members.empty()) {
            AddMembers(controller, group, places, page);
        }
    });
}

struct DriveColumn {
    std::string_view title;
    std::string (*value)(const Drive& drive);
};

constexpr DriveColumn kDriveColumns[] = {
    {"Enclosure", [](const Drive& drive) { return drive.enclosure; }},
    {"Slot", [](const Drive& drive) { return drive.slot; }},
    {"Group", [](const Drive& drive) { return drive.group; }},
    {"Use", [](const Drive& drive) { return RoleOf(drive); }},
    {"Size", [](const Drive& drive) { return drive.capacity; }},
    {"Type",
     [](const Drive& drive) {
         return drive.interfaceType + (drive.interfaceType.empty() ? "" : " ") + drive.media;
     }},
    {"Temperature", [](const Drive& drive) { return drive.temperature; }},
    {"Power", [](const Drive& drive) { return drive.power; }},
    {"Media errors", [](const Drive& drive) { return drive.mediaErrors; }},
    {"Other errors", [](const Drive& drive) { return drive.otherErrors; }},
    {"Predicted failures", [](const Drive& drive) { return drive.predictiveFailures; }},
    {"Vendor", [](const Drive& drive) { return drive.vendor; }},
    {"Model", [](const Drive& drive) { return drive.product; }},
    {"Serial number", [](const Drive& drive) { return drive.serial; }},
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

void AddSmartTable(const inventory::Smart& smart, const std::string& name, Markup& page) {
    AddTable(name, smart.columns, page, [&] {
        for (const std::vector<std::string>& row : smart.rows) {
            page.In("tr", {}, [&] {
                for (const std::string& cell : row) {
                    AddCell(cell, page);
                }
            });
        }
    });
}

void AddSmartOf(const Drive& drive, bool isOpen, Markup& page) {
    const inventory::Smart smart = SmartOf(drive);
    const std::string name = "SMART data of " + (drive.number.empty() ? "a drive" : drive.number);
    page.In("details", {{"open", isOpen ? "open" : ""}}, [&] {
        page.Element("summary", name);
        page.In("dl", {}, [&] {
            for (const std::pair<std::string, std::string>& key : smart.keys) {
                const std::string_view value = key.second.empty() ? kNotTold : std::string_view(key.second);
                page.In("div", {}, [&] { page.Element("dt", key.first).Element("dd", value); });
            }
        });
        if (!smart.tableName.empty()) {
            AddSmartTable(smart, name, page);
        }
    });
}

}  // namespace

void AddFindings(const inventory::Health& health, const DrivePlaces& places, Markup& page) {
    const auto add = [&](std::size_t first, std::size_t end) {
        page.In("ul", {{"class", "findings"}}, [&] {
            for (std::size_t index = first; index < end; ++index) {
                AddFinding(health.findings[index], places, page);
            }
        });
    };
    const std::size_t count = health.findings.size();
    const std::size_t shown = std::min(count, kMaxFindingsAtOnce);
    page.Element("h2", "What needs attention");
    add(0, shown);
    if (shown < count) {
        page.In("details", {}, [&] {
            page.Element("summary", "and " + std::to_string(count - shown) + " more");
            add(shown, count);
        });
    }
}

void AddGroups(const Controller& controller, const DrivePlaces& places, Markup& page) {
    page.In("div", {{"class", "groups"}}, [&] {
        for (const Group& group : controller.groups) {
            AddGroup(controller, group, places, page);
        }
    });
}

void AddDrives(const Controller& controller, const DrivePlaces& places, Markup& page) {
    const std::vector<DriveColumn> columns = ColumnsFor(controller);
    std::vector<std::string_view> titles = {"Drive", "State"};
    for (const DriveColumn& column : columns) {
        titles.push_back(column.title);
    }
    AddTable("Drives of " + NameOf(controller), titles, page, [&] {
        for (const Drive& drive : controller.drives) {
            const inventory::Level level = LevelOf(drive);
            page.In("tr", {{"class", ClassOf(level)}}, [&] {
                page.Element("th", drive.number.empty() ? kNotTold : std::string_view(drive.number),
                             {{"scope", "row"}});
                page.In("td", {{"class", "state"}}, [&] {
                    AddSign(level, page);
                    page.Own(" ").Text(places.StateOf(controller, drive));
                });
                for (const DriveColumn& column : columns) {
                    AddCell(column.value(drive), page);
                }
            });
        }
    });
}

void AddSmart(const Controller& controller, Markup& page) {
    std::vector<const Drive*> drives;
    for (const Drive& drive : controller.drives) {
        if (drive.smart != nullptr) {
            drives.push_back(&drive);
        }
    }
    if (drives.empty()) {
        return;
    }
    page.Element("h3", "SMART data");
    for (const Drive* const drive : drives) {
        AddSmartOf(*drive, drives.size() <= kMaxOpenSmart, page);
    }
}

}  // namespace views::html
