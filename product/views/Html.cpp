#include "HtmlParts.h"
#include "Time.h"
#include "views/Views.h"

namespace views {
namespace {

using inventory::Controller;
using inventory::Level;

// Where there are more controllers, those that are well are closed, and of the others all but the drawing.
constexpr std::size_t kMaxOpenControllers = 4;

/// A part of a controller that can be closed, with its heading.
template <typename Work>
void AddClosable(std::string_view title, bool isOpen, Markup& page, Work work) {
    page.In("details", {{"open", isOpen ? "open" : ""}}, [&] {
        page.In("summary", {}, [&] { page.Element("h3", title); });
        work();
    });
}

std::string TitleOf(const Controller& controller) {
    return controller.number.empty() ? "Controller without a number" : "Controller " + controller.number;
}

std::string CountsOf(const Controller& controller) {
    inventory::Counts counts;
    counts.groups = controller.groups.size();
    counts.drives = controller.drives.size();
    for (const inventory::Group& group : controller.groups) {
        counts.logicalDrives += group.logicalDrives.size();
    }
    return counts.drives == 0 && counts.groups == 0 ? "no drive" : Describe(counts);
}

void AddFact(std::string_view name, const std::string& value, Markup& page) {
    if (!value.empty()) {
        page.In("div", {}, [&] { page.Element("dt", name).Element("dd", value); });
    }
}

void AddFacts(const Controller& controller, Markup& page) {
    if (controller.item == nullptr) {
        return;
    }
    page.In("dl", {}, [&] {
        AddFact("Status", controller.status, page);
        AddFact("Product", controller.product, page);
        AddFact("Serial number", controller.serial, page);
        AddFact("Firmware", controller.firmware, page);
        for (const inventory::BackupUnit& unit : controller.backupUnits) {
            page.In("div", {{"class", html::ClassOf(LevelOf(unit))}}, [&] {
                page.Element("dt", unit.name);
                page.In("dd", {}, [&] {
                    html::AddSign(LevelOf(unit), page);
                    page.Own(" ").Text(unit.status.empty() ? unit.presence : unit.status);
                    page.Text(unit.replacement == "Yes" ? ", replacement required" : "");
                });
            });
        }
    });
}

void AddController(const Controller& controller, bool isBrief, const html::DrivePlaces& places,
                   Markup& page) {
    const Level level = OverallLevelOf(controller);
    const bool isOpen = !isBrief || level != Level::Ok;
    page.In("details", {{"class", "controller"}, {"open", isOpen ? "open" : ""}}, [&] {
        page.In("summary", {{"class", html::ClassOf(level)}}, [&] {
            html::AddSign(level, page);
            page.Element("h2", TitleOf(controller));
            page.In("span", {{"class", "note"}}, [&] {
                page.Text(controller.product).Text(controller.product.empty() ? "" : ", ");
                page.Text(CountsOf(controller));
            });
        });
        AddFacts(controller, page);
        if (!controller.drives.empty()) {
            page.Element("h3", "Enclosures");
            html::AddEnclosures(controller, places, page);
        }
        if (!controller.groups.empty()) {
            AddClosable("Groups", !isBrief, page, [&] { html::AddGroups(controller, places, page); });
        }
        if (!controller.drives.empty()) {
            AddClosable("Drives", !isBrief, page, [&] { html::AddDrives(controller, places, page); });
        }
        html::AddSmart(controller, page);
    });
}

void AddTime(const inventory::Snapshot& snapshot, Markup& page) {
    if (!snapshot.takenAt) {
        page.Own("From a saved document");
        return;
    }
    const std::string time = UtcText(*snapshot.takenAt);
    page.Own("Taken on ");
    page.Element("time", time.substr(0, 10) + " at " + time.substr(11, 8) + " UTC", {{"datetime", time}});
}

void AddRollUp(const inventory::Snapshot& snapshot, const inventory::Health& health, Markup& page) {
    page.In("header", {}, [&] {
        page.Element("h1", "RAID report");
        page.In("div", {{"class", "rollup " + std::string(html::ClassOf(health.level))}}, [&] {
            html::AddSign(health.level, page);
            page.In("p", {}, [&] {
                page.Element("b", NameOf(health.level), {{"aria-hidden", "true"}}).Own(" ");
                page.Element("span", Headline(health));
            });
        });
        page.In("p", {{"class", "note"}}, [&] { AddTime(snapshot, page); });
    });
}

void AddBody(const inventory::Snapshot& snapshot, const inventory::Health& health, Markup& page) {
    const std::vector<Controller>& controllers = snapshot.TheServer().controllers;
    const html::DrivePlaces places(snapshot.TheServer(), health);
    AddRollUp(snapshot, health, page);
    page.In("main", {}, [&] {
        if (!health.findings.empty()) {
            html::AddFindings(health, places, page);
        }
        if (controllers.empty()) {
            page.Element("p", "The server told of no controller and no drive.");
        }
        for (const Controller& controller : controllers) {
            AddController(controller, controllers.size() > kMaxOpenControllers, places, page);
        }
    });
}

}  // namespace

std::string Html(const inventory::Snapshot& snapshot) {
    const inventory::Health health = snapshot.Judge();
    Markup page;
    page.Own("<!DOCTYPE html>\n");
    page.In("html", {{"lang", "en"}, {"xmlns", "http://www.w3.org/1999/xhtml"}}, [&] {
        page.In("head", {}, [&] {
            page.Own(
                "<meta charset=\"utf-8\"/>\n"
                "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
                "<meta name=\"color-scheme\" content=\"light dark\"/>\n");
            page.Element("title", "RAID " + std::string(NameOf(health.level)) + ": " + Headline(health));
            page.In("style", {}, [&] { page.Own(html::StyleSheet()); });
        });
        page.In("body", {}, [&] { AddBody(snapshot, health, page); });
    });
    return page.Take();
}

}  // namespace views
