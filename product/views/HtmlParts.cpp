#include "HtmlParts.h"
#include "basics/Words.h"

namespace views::html {
namespace {

using inventory::Controller;
using inventory::Drive;
using inventory::Finding;
using inventory::Group;
using inventory::Level;

constexpr const char* kNumberless = "a drive";  // as findings name it

std::string KeyOf(const Finding& finding) {
    return finding.controller + '\n' + finding.group + '\n' + finding.part + '\n' + finding.enclosure + '\n' +
           finding.slot;
}

/// What a finding about the drive would name; empty for a drive that nothing tells from another one.
std::string KeyOf(const Controller& controller, const Drive& drive) {
    const bool isOneOfMany = drive.number.empty() && drive.enclosure.empty() && drive.slot.empty();
    return isOneOfMany ? ""
                       : KeyOf({.controller = controller.number,
                                .group = drive.group,
                                .part = drive.number.empty() ? kNumberless : drive.number,
                                .enclosure = drive.enclosure,
                                .slot = drive.slot});
}

/// "g0-2": the second part of the first controller.
std::string AnchorFrom(char kind, std::initializer_list<std::ptrdiff_t> numbers) {
    return kind + basics::Joined(numbers, "-", [](std::ptrdiff_t number) { return std::to_string(number); });
}

template <typename Part>
std::ptrdiff_t PlaceIn(const std::vector<Part>& parts, const Part& part) {
    return &part - parts.data();
}

/// Of two drives that cannot be told apart, each has the same to say.
void Append(const std::string& what, std::string& wrong) {
    if (wrong.find(what) == std::string::npos) {
        wrong += (wrong.empty() ? "" : ", ") + what;
    }
}

struct Sign {
    std::string_view name, mark, words;
};

/// Words for ears, before the state's own.
Sign SignOf(Look look) {
    switch (look) {
        case Look::Plain:
            return {};
        case Look::Well:
            return {"ok", "\xE2\x9C\x93", "OK "};
        case Look::Busy:
            return {"busy", "\xE2\x86\xBB", "OK, under way: "};
        case Look::Accepted:
            return {"accepted", "\xE2\x80\x93", "ACCEPTED "};
        case Look::Warning:
            return {"warning", "!", "WARNING "};
        case Look::Critical:
            return {"critical", "\xC3\x97", "CRITICAL "};
        case Look::Unknown:
            break;
    }
    return {"unknown", "?", "UNKNOWN "};
}

}  // namespace

Places::Places(const inventory::Server& server, const inventory::Health& health) : m_Server(server) {
    for (const Level level : {Level::Critical, Level::Warning, Level::Unknown}) {
        for (const Finding& finding : health.findings) {
            if (finding.level == level) {
                Append(finding.what, m_Wrongs[KeyOf(finding)]);
            }
        }
    }
    for (const Controller& controller : server.controllers) {
        Add(controller);
    }
}

// By what a finding about a part would name. Only parts that have a name can be told from others.
void Places::Add(const Controller& controller) {
    const auto add = [this](const std::string& key, const std::string& anchor) {
        m_Anchors.try_emplace(key, anchor);
    };
    if (!controller.number.empty() || m_Server.controllers.size() == 1) {
        add(KeyOf({.controller = controller.number}), AnchorOf(controller));
    }
    for (const inventory::BackupUnit& unit : controller.backupUnits) {
        add(KeyOf({.controller = controller.number, .part = unit.name}), AnchorOf(controller, unit));
    }
    for (const Group& group : controller.groups) {
        add(KeyOf({.controller = controller.number, .group = group.number}), AnchorOf(controller, group));
        for (const inventory::LogicalDrive& drive : group.logicalDrives) {
            add(KeyOf({.controller = controller.number, .group = group.number, .part = drive.number}),
                AnchorOf(controller, group, drive));
        }
    }
    for (const Drive& drive : controller.drives) {
        if (const std::string key = KeyOf(controller, drive); !key.empty()) {
            add(key, AnchorOf(controller, drive));
        }
    }
}

std::string Places::AnchorOf(const Controller& controller) const {
    return AnchorFrom('c', {PlaceIn(m_Server.controllers, controller)});
}

std::string Places::AnchorOf(const Controller& controller, const inventory::BackupUnit& unit) const {
    return AnchorFrom('u',
                      {PlaceIn(m_Server.controllers, controller), PlaceIn(controller.backupUnits, unit)});
}

std::string Places::AnchorOf(const Controller& controller, const Group& group) const {
    return AnchorFrom('g', {PlaceIn(m_Server.controllers, controller), PlaceIn(controller.groups, group)});
}

std::string Places::AnchorOf(const Controller& controller, const Group& group,
                             const inventory::LogicalDrive& drive) const {
    return AnchorFrom('l', {PlaceIn(m_Server.controllers, controller), PlaceIn(controller.groups, group),
                            PlaceIn(group.logicalDrives, drive)});
}

std::string Places::AnchorOf(const Controller& controller, const Drive& drive) const {
    return AnchorFrom('d', {PlaceIn(m_Server.controllers, controller), PlaceIn(controller.drives, drive)});
}

std::string Places::AnchorOf(const Finding& finding) const {
    const std::string keys[] = {KeyOf(finding),
                                KeyOf({.controller = finding.controller, .group = finding.group}),
                                KeyOf({.controller = finding.controller})};
    for (const std::string& key : keys) {
        if (const auto found = m_Anchors.find(key); found != m_Anchors.end()) {
            return found->second;
        }
    }
    return "";
}

std::string Places::StateOf(const Controller& controller, const Drive& drive) const {
    if (drive.health != Level::Ok) {
        if (const auto wrong = m_Wrongs.find(KeyOf(controller, drive)); wrong != m_Wrongs.end()) {
            return wrong->second;
        }
    }
    const std::string status = StatusOf(drive);
    return status.empty() ? "not told" : status;
}

std::string_view ClassOf(Look look) {
    return SignOf(look).name;
}

std::string_view ClassOf(Level level) {
    return ClassOf(LookOf(level));
}

void AddSign(Look look, Element page) {
    if (look == Look::Plain) {
        return;
    }
    const Sign sign = SignOf(look);
    page.Add("span", sign.mark, {{"class", "sign " + std::string(sign.name)}, {"aria-hidden", "true"}});
    page.Add("span", sign.words, {{"class", "aside"}});
}

void AddSign(Level level, Element page) {
    AddSign(LookOf(level), page);
}

}  // namespace views::html
