#include "HtmlParts.h"

namespace views::html {
namespace {

constexpr std::string_view kNumberless = "a drive";  // as findings name it

// Empty for a drive that nothing tells from another one.
std::string KeyOf(const std::string& controller, const std::string& drive, const std::string& enclosure,
                  const std::string& slot) {
    const bool isOneOfMany = (drive.empty() || drive == kNumberless) && enclosure.empty() && slot.empty();
    return isOneOfMany ? "" : controller + '\n' + drive + '\n' + enclosure + '\n' + slot;
}

std::string KeyOf(const inventory::Controller& controller, const inventory::Drive& drive) {
    return KeyOf(controller.number, drive.number.empty() ? std::string(kNumberless) : drive.number,
                 drive.enclosure, drive.slot);
}

std::string KeyOf(const inventory::Finding& finding) {
    return KeyOf(finding.controller, finding.part, finding.enclosure, finding.slot);
}

std::string ValueAt(const std::unordered_map<std::string, std::string>& values, const std::string& key) {
    const auto found = values.find(key);
    return found == values.end() ? "" : found->second;
}

struct LevelLook {
    std::string_view name, sign;
};

LevelLook LookOf(inventory::Level level) {
    switch (level) {
        case inventory::Level::Ok:
            return {"ok", "\xE2\x9C\x93"};
        case inventory::Level::Warning:
            return {"warning", "!"};
        case inventory::Level::Critical:
            return {"critical", "\xC3\x97"};
        case inventory::Level::Unknown:
            break;
    }
    return {"unknown", "?"};
}

}  // namespace

DrivePlaces::DrivePlaces(const inventory::Server& server, const inventory::Health& health)
    : m_Server(server) {
    for (const inventory::Finding& finding : health.findings) {
        if (const std::string key = KeyOf(finding); !key.empty()) {
            m_Wrongs.try_emplace(key, finding.what);
        }
    }
    for (const inventory::Controller& controller : server.controllers) {
        for (const inventory::Drive& drive : controller.drives) {
            if (const std::string key = KeyOf(controller, drive); m_Wrongs.contains(key)) {
                m_Anchors.try_emplace(key, AnchorOf(controller, drive));
            }
        }
    }
}

std::string DrivePlaces::AnchorOf(const inventory::Controller& controller,
                                  const inventory::Drive& drive) const {
    return "d" + std::to_string(&controller - m_Server.controllers.data()) + "-" +
           std::to_string(&drive - controller.drives.data());
}

std::string DrivePlaces::AnchorOf(const inventory::Finding& finding) const {
    return ValueAt(m_Anchors, KeyOf(finding));
}

std::string DrivePlaces::StateOf(const inventory::Controller& controller,
                                 const inventory::Drive& drive) const {
    if (drive.health != inventory::Level::Ok) {
        if (const auto wrong = m_Wrongs.find(KeyOf(controller, drive)); wrong != m_Wrongs.end()) {
            return wrong->second;
        }
    }
    return StatusOf(drive);
}

std::string_view ClassOf(inventory::Level level) {
    return LookOf(level).name;
}

void AddSign(inventory::Level level, Element page) {
    const std::string look = "sign " + std::string(ClassOf(level));
    page.Add("span", LookOf(level).sign, {{"class", look}, {"aria-hidden", "true"}});
    page.Add("span", std::string(NameOf(level)) + " ", {{"class", "aside"}});
}

}  // namespace views::html
