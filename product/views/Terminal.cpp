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
constexpr char kNotWell = '!';            // behind a member

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
                         isEmpty ? Blank() : Grid::Cell{drive.state, drive.health},
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
                     {StatusOf(drive), drive.health},
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

/// The text in lines no longer than the terminal is wide, broken at blanks, or within a word that fits no
/// line; the first one begins in column `column`, the others in column `hang`.
std::string Wrapped(std::string_view text, std::size_t column, std::size_t hang, const TerminalStyle& style) {
    if (style.columns == 0) {
        return std::string(text);
    }
    const std::size_t room = style.columns > hang ? style.columns - hang : 1;
    std::string wrapped;
    const auto startLine = [&] {
        wrapped.append(1, '\n').append(hang, ' ');
        column = hang;
    };
    for (bool isFirst = true; isFirst || !text.empty(); isFirst = false) {
        std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const std::size_t gap = isFirst ? 0 : 1;
        if (column + gap + basics::WidthOf(word) > style.columns) {
            startLine();
        } else {
            wrapped.append(gap, ' ');
            column += gap;
        }
        for (; basics::WidthOf(word) > room; startLine()) {
            const std::size_t front = std::max<std::size_t>(basics::FittingFront(word, room), 1);
            wrapped += word.substr(0, front);
            word.remove_prefix(std::min(front, word.size()));
        }
        wrapped += word;
        column += basics::WidthOf(word);
    }
    return wrapped;
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

std::string StateLine(const std::string& of, const std::string& state, std::optional<Level> level,
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
           Colored(basics::Shortened(basics::Printable(state), std::min(room, kLongestText)), level, style) +
           '\n';
}

std::string StatesOf(const Controller& controller, const TerminalStyle& style) {
    // A word that is well in itself says nothing good beside parts that are not.
    const bool isMisleading = controller.statusHealth == Level::Ok && controller.health != Level::Ok;
    std::string states =
        StateLine("status", controller.status,
                  isMisleading ? std::nullopt : std::optional(controller.statusHealth), style);
    for (const inventory::BackupUnit& unit : controller.backupUnits) {
        states += StateLine(unit.name, unit.status.empty() ? unit.presence : unit.status, unit.health, style);
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
        const std::string level = basics::PadRight(std::string(NameOfLevel(finding)), kLevelWidth);
        text +=
            std::string(kStep, ' ') +
            Colored(level, finding.isAccepted ? std::nullopt : std::optional(finding.level), style) +
            Wrapped(basics::Printable(Describe(finding)), kStep + kLevelWidth, kStep + kLevelWidth, style) +
            '\n';
    }
    return text.empty() ? "" : '\n' + Heading("Needs attention", style) + '\n' + text;
}

std::string Verdict(const inventory::Health& health, const std::string& text, const TerminalStyle& style) {
    const std::string level(NameOf(health.level));
    return Colored(level, health.level, style) + ": " + Wrapped(text, level.size() + 2, kStep, style) + '\n';
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
        grid.AddRow(
            {{name},
             {value, name == std::string_view("Status") ? std::optional(drive.health) : std::nullopt}});
    }
    return Block(grid, style);
}

std::string DrivePage(const Drive& drive, const inventory::Health& health, const TerminalStyle& style) {
    return Verdict(health, NameOf(drive), style) + Attention(health, style) + Identity(drive, style) +
           (drive.smart == nullptr ? "\n  no SMART data\n" : SmartBlock(drive, style));
}

}  // namespace

std::string Table(const inventory::Snapshot& snapshot, const TerminalStyle& style) {
    const inventory::Health& health = snapshot.TheHealth();
    const inventory::Server& server = snapshot.TheServer();
    if (const Drive* const drive = OnlyDriveOf(server)) {
        return DrivePage(*drive, health, style);
    }
    std::string text = Verdict(health, Headline(health), style) + Attention(health, style);
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
