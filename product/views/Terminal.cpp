#include "Grid.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "inventory/Measure.h"
#include "inventory/Smart.h"
#include "views/Views.h"

#include <algorithm>
#include <utility>

namespace views {
namespace {

using inventory::Controller;
using inventory::Drive;
using inventory::Group;
using inventory::Level;
using inventory::LogicalDrive;

constexpr std::size_t kStep = 2;
constexpr std::size_t kLongestText = 60;  // of a text in a line of them
constexpr std::size_t kLongestFinding = 500;
constexpr char kNotWell = '!';  // behind a member

using Fit = Grid::Fit;

/// A cell that tells nothing, not even that something is missing.
Grid::Cell Blank() {
    return {"", {}, true};
}

/// What else is worth knowing of a drive, such as "211 media errors".
std::string NotesOn(const Drive& drive) {
    std::vector<std::string> notes;
    const auto add = [&notes](const char* name, const std::string& text, bool isWorthIt) {
        if (isWorthIt) {
            notes.push_back(name + text);
        }
    };
    const auto addCount = [&](const char* name, const std::string& count) {
        add(name, count, count.find_first_not_of('0') != std::string::npos);
    };
    addCount("failure predicted: ", drive.predictiveFailures);
    addCount("media errors: ", drive.mediaErrors);
    addCount("other errors: ", drive.otherErrors);
    add("power: ", drive.power, !drive.power.empty() && drive.power != "Active");
    return basics::Joined(notes);
}

std::string MembersOf(const Controller& controller, const Group& group) {
    return basics::Joined(group.members, " ", [&](const inventory::Member& member) {
        const Drive* const drive = inventory::DriveOf(controller, member);
        const bool isWell = drive != nullptr && drive->health == Level::Ok;
        return (member.number.empty() ? "?" : member.number) + (isWell ? "" : std::string(1, kNotWell));
    });
}

std::string CachesOf(const Group& group) {
    return basics::Joined(group.caches, " ", &LogicalDrive::number);
}

Grid GroupsOf(const Controller& controller) {
    Grid grid({{"GROUP"},
               {"LEVEL"},
               {"DRIVES", Fit::Shorten},
               {"LD"},
               {"STATE"},
               {"SIZE", Fit::Omit, true},
               {"NAME", Fit::Omit},
               {"CACHE", Fit::Omit}});
    for (const Group& group : controller.groups) {
        const std::vector<LogicalDrive> none(1);
        const bool isEmpty = group.logicalDrives.empty();
        bool isFirst = true;
        for (const LogicalDrive& drive : isEmpty ? none : group.logicalDrives) {
            const auto once = [&](const std::string& text) { return isFirst ? Grid::Cell{text} : Blank(); };
            const auto ofDrive = [&](const std::string& text) {
                return isEmpty ? Blank() : Grid::Cell{text};
            };
            grid.AddRow({once(group.number),
                         once(group.level),
                         isFirst ? Grid::Cell{MembersOf(controller, group), {}, false, kNotWell} : Blank(),
                         ofDrive(drive.number),
                         isEmpty ? Blank() : Grid::Cell{drive.state, LookOf(drive.health)},
                         ofDrive(isEmpty ? "" : drive.capacity),
                         ofDrive(drive.name),
                         {CachesOf(group), {}, true}});
            isFirst = false;
        }
    }
    return grid;
}

std::string SlotOf(const Drive& drive) {
    return drive.enclosure.empty() ? drive.slot
                                   : drive.enclosure + ':' + (drive.slot.empty() ? "?" : drive.slot);
}

Grid DrivesOf(const Controller& controller) {
    Grid grid({{"DRIVE"},
               {"SLOT"},
               {"STATUS"},
               {"ROLE", Fit::Shorten},
               {"GROUP"},
               {"SIZE", Fit::Omit, true},
               {"TYPE", Fit::Omit},
               {"TEMP", Fit::Omit, true},
               {"NOTES", Fit::ShortenOrOmit},
               {"MODEL", Fit::Omit},
               {"SERIAL NUMBER", Fit::Omit}});
    for (const Drive& drive : controller.drives) {
        grid.AddRow({{drive.number},
                     {SlotOf(drive)},
                     {StatusOf(drive), LookOf(drive)},
                     {inventory::RoleOf(drive)},
                     {drive.group, {}, true},
                     {drive.capacity},
                     {inventory::TypeOf(drive)},
                     {drive.temperature},
                     {NotesOn(drive), {}, true},
                     {drive.product},
                     {drive.serial}});
    }
    return grid;
}

std::string HeadlineOf(const Controller& controller) {
    std::string title = "Controller";
    const auto add = [&title](const char* before, const std::string& text) {
        title += text.empty() ? "" : before + basics::Shortened(basics::Printable(text), kLongestText);
    };
    add(" ", controller.number);
    add(": ", controller.product);
    add(", serial number ", controller.serial);
    add(", firmware ", controller.firmware);
    return title;
}

std::string StateLine(const std::string& of, const std::string& state, Look look,
                      const TerminalStyle& style) {
    const std::size_t half = style.columns == 0 ? kLongestText : style.columns / 2;
    const std::string name = std::string(kStep, ' ') +
                             basics::Shortened(basics::Printable(of), std::min(half, kLongestText)) + ' ';
    if (state.empty()) {
        return name + "not told\n";
    }
    const std::size_t room =
        style.columns > basics::WidthOf(name) ? style.columns - basics::WidthOf(name) : kLongestText;
    return name +
           Colored(basics::Shortened(basics::Printable(state), std::min(room, kLongestText)), look, style) +
           '\n';
}

std::string StatesOf(const Controller& controller, const TerminalStyle& style) {
    std::string states = StateLine("status", controller.status, LookOfStatus(controller), style);
    for (const inventory::BackupUnit& unit : controller.backupUnits) {
        states +=
            StateLine(unit.name, unit.status.empty() ? unit.presence : unit.status, LookOf(unit), style);
    }
    return states;
}

std::string Block(const Grid& grid, const TerminalStyle& style) {
    return grid.IsEmpty() ? "" : '\n' + grid.Text(style, kStep);
}

std::string Section(const Controller& controller, const TerminalStyle& style) {
    std::string text = '\n' + Heading(Wrapped(HeadlineOf(controller), 0, kStep, style), style) + '\n';
    if (controller.item != nullptr) {
        text += StatesOf(controller, style);
    }
    if (controller.drives.empty()) {
        text += "  no drive\n";
    }
    return text + Block(GroupsOf(controller), style) + Block(DrivesOf(controller), style);
}

std::string Attention(const inventory::Health& health, const TerminalStyle& style) {
    constexpr std::size_t kLevelWidth = 10;
    std::string text;
    for (const inventory::Finding& finding : health.findings) {
        const std::string words = basics::Shortened(basics::Printable(Describe(finding)), kLongestFinding);
        const std::string level = basics::PadRight(std::string(NameOfLevel(finding)), kLevelWidth);
        text += std::string(kStep, ' ') + Colored(level, LookOf(finding), style) +
                Wrapped(words, kStep + kLevelWidth, kStep + kLevelWidth, style) + '\n';
    }
    return text.empty() ? "" : '\n' + Heading("Needs attention", style) + '\n' + text;
}

/// "CRITICAL on storage7: 2 critical in ..."
std::string Verdict(const inventory::Snapshot& snapshot, const std::string& text,
                    const TerminalStyle& style) {
    const Level level = snapshot.TheHealth().level;
    const std::string name(NameOf(level));
    const std::string host = basics::Shortened(basics::Printable(snapshot.host), kLongestText);
    return Colored(name, LookOf(level), style) +
           Wrapped((host.empty() ? ": " : " on " + host + ": ") + text, name.size(), kStep, style) + '\n';
}

bool HoldsNumbers(const inventory::Smart& smart, std::size_t column) {
    return std::all_of(smart.rows.begin(), smart.rows.end(), [column](const std::vector<std::string>& row) {
        return inventory::MeasureFrom(row[column]).has_value();
    });
}

std::string SmartBlock(const Drive& drive, const TerminalStyle& style) {
    const inventory::Smart smart = inventory::SmartOf(drive);
    Grid keys({{"SMART"}, {"VALUE", Fit::Shorten}});
    for (const auto& [key, value] : smart.keys) {
        keys.AddRow({{key}, {value}});
    }
    std::vector<Grid::Column> columns;
    for (std::size_t column = 0; column < smart.columns.size(); ++column) {
        columns.push_back(
            {basics::Printable(smart.columns[column]), Fit::Fixed, HoldsNumbers(smart, column)});
    }
    Grid table(std::move(columns));
    for (const std::vector<std::string>& row : smart.rows) {
        std::vector<Grid::Cell> cells(row.size());
        std::transform(row.begin(), row.end(), cells.begin(),
                       [](const std::string& text) { return Grid::Cell{text}; });
        table.AddRow(std::move(cells));
    }
    return Block(keys, style) + Block(table, style);
}

std::string NameOf(const Drive& drive) {
    std::string name = basics::Printable(drive.number.empty() ? "a drive" : drive.number);
    name += drive.enclosure.empty() ? "" : " in enclosure " + basics::Printable(drive.enclosure);
    return name + (drive.slot.empty() ? "" : " slot " + basics::Printable(drive.slot));
}

std::string Identity(const Drive& drive, const TerminalStyle& style) {
    const std::pair<const char*, std::string> kLines[] = {
        {"Status", StatusOf(drive)},
        {"Role", inventory::RoleOf(drive)},
        {"Group", drive.group},
        {"Vendor", drive.vendor},
        {"Model", drive.product},
        {"Serial number", drive.serial},
        {"Firmware", drive.firmware},
        {"Size", drive.capacity},
        {"Interface", drive.interfaceType},
        {"Media", drive.media},
        {"Temperature", drive.temperature},
        {"Power", drive.power},
        {"Media errors", drive.mediaErrors},
        {"Other errors", drive.otherErrors},
        {"Predicted failures", drive.predictiveFailures},
        {"Enclosure", drive.position},
    };
    Grid grid({{"DRIVE"}, {"VALUE", Fit::Shorten}});
    for (const auto& [name, value] : kLines) {
        grid.AddRow({{name}, {value, name == std::string_view("Status") ? LookOf(drive) : Look::Plain}});
    }
    return Block(grid, style);
}

std::string DrivePage(const Drive& drive, const inventory::Snapshot& snapshot, const TerminalStyle& style) {
    return Verdict(snapshot, NameOf(drive), style) + Attention(snapshot.TheHealth(), style) +
           Identity(drive, style) +
           (drive.smart == nullptr ? "\n  no SMART data\n" : SmartBlock(drive, style));
}

}  // namespace

std::string Table(const inventory::Snapshot& snapshot, const TerminalStyle& style) {
    const inventory::Health& health = snapshot.TheHealth();
    const inventory::Server& server = snapshot.TheServer();
    if (const Drive* const drive = OnlyDriveOf(server)) {
        return DrivePage(*drive, snapshot, style);
    }
    std::string text = Verdict(snapshot, Headline(health), style) + Attention(health, style);
    for (const Controller& controller : server.controllers) {
        text += Section(controller, style);
        for (const Drive& drive : controller.drives) {
            if (drive.smart != nullptr) {
                text += '\n' + Heading("  " + Wrapped(NameOf(drive), kStep, kStep, style), style) + '\n' +
                        SmartBlock(drive, style);
            }
        }
    }
    return text;
}

}  // namespace views
