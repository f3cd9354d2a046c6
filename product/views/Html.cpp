#include "HtmlHistory.h"
#include "HtmlPage.h"
#include "HtmlParts.h"
#include "basics/Time.h"
#include "views/Views.h"

#include <algorithm>

namespace views {
namespace {

using html::Element;
using inventory::Controller;
using inventory::Level;

// Where there are more controllers, those that are well are closed, and of the others the tables.
constexpr std::size_t kMaxOpenControllers = 4;

/// A part of a controller that can be closed, with its heading.
Element AddClosable(std::string_view title, bool isOpen, Element page) {
    Element details = page.Add("details", {{"open", isOpen ? "open" : ""}});
    details.Add("summary").Add("h3", title);
    return details;
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

/// `anchor` may be empty.
void AddFact(std::string_view name, const std::string& value, Look look, std::string_view anchor,
             Element facts) {
    if (value.empty()) {
        return;
    }
    Element fact =
        facts.Add("div", {{"class", html::ClassOf(look)}, {"id", anchor}}).Add("dt", name).Add("dd");
    html::AddSign(look, fact);
    fact.Text(value);
}

std::string StateOf(const inventory::BackupUnit& unit) {
    const std::string state = unit.status.empty() ? unit.presence : unit.status;
    return (state.empty() ? "not told" : state) + (unit.replacement == "Yes" ? ", replacement required" : "");
}

void AddFacts(const Controller& controller, const html::Places& places, Element page) {
    if (controller.item == nullptr) {
        return;
    }
    Element facts = page.Add("dl");
    AddFact("Status", controller.status, LookOfStatus(controller), "", facts);
    AddFact("Product", controller.product, Look::Plain, "", facts);
    AddFact("Serial number", controller.serial, Look::Plain, "", facts);
    AddFact("Firmware", controller.firmware, Look::Plain, "", facts);
    for (const inventory::BackupUnit& unit : controller.backupUnits) {
        AddFact(unit.name, StateOf(unit), LookOf(unit), places.AnchorOf(controller, unit), facts);
    }
}

/// Whether a group is what somebody looks for, who follows a finding.
bool NeedsAttention(const Controller& controller) {
    return std::any_of(controller.groups.begin(), controller.groups.end(),
                       [](const inventory::Group& group) { return group.health != Level::Ok; });
}

void AddController(const Controller& controller, bool isBrief, const html::Places& places,
                   const html::DriveLinesOfPage& lines, Element page) {
    const Level level = controller.health;
    const bool isOpen = !isBrief || level != Level::Ok;
    Element details = page.Add(
        "details",
        {{"class", "controller"}, {"id", places.AnchorOf(controller)}, {"open", isOpen ? "open" : ""}});
    Element summary = details.Add("summary", {{"class", html::ClassOf(level)}});
    html::AddSign(level, summary);
    Element note = summary.Add("h2", TitleOf(controller)).Add("span", {{"class", "note"}});
    note.Text(controller.product).Text(controller.product.empty() ? "" : ", ").Text(CountsOf(controller));
    AddFacts(controller, places, details);
    if (!controller.drives.empty()) {
        details.Add("h3", "Enclosures");
        html::AddEnclosures(controller, places, details);
    }
    if (!controller.groups.empty()) {
        html::AddGroups(controller, places,
                        AddClosable("Groups", !isBrief || NeedsAttention(controller), details));
    }
    if (!controller.drives.empty()) {
        html::AddDrives(controller, places, lines, AddClosable("Drives", !isBrief, details));
    }
    html::AddSmart(controller, details);
}

void AddTime(const inventory::Snapshot& snapshot, Element page) {
    if (!snapshot.takenAt) {
        page.Text("From a saved document");
        return;
    }
    const std::string shown = basics::UtcText(*snapshot.takenAt, "%Y-%m-%d at %H:%M:%S UTC");
    page.Text("Taken on ");
    page.Add("time", shown, {{"datetime", basics::UtcText(*snapshot.takenAt)}});
}

/// What the server is called, behind a word; nothing where that is not known.
std::string OfHost(const inventory::Snapshot& snapshot, const char* word) {
    return snapshot.host.empty() ? "" : word + snapshot.host;
}

void AddFailure(const Watching& watching, Element header) {
    if (!watching.failure.empty()) {
        const std::string since = watching.failuresInARow < 2
                                      ? ""
                                      : ", " + std::to_string(watching.failuresInARow) + " times in a row";
        header.Add("p",
                   "The server could not be asked" +
                       (watching.askedAt ? " at " + basics::UtcText(*watching.askedAt, "%H:%M:%S UTC") : "") +
                       since + ": " + watching.failure + ". What is shown is older.",
                   {{"class", "failure"}});
    }
}

void AddRollUp(const inventory::Snapshot& snapshot, const inventory::Health& health, const Watching* watching,
               Element page) {
    const Level level = LevelOf(health, watching);
    Element header = page.Add("header").Add("h1", "RAID report" + OfHost(snapshot, " of "));
    Element rollUp = header.Add("div", {{"class", "rollup " + std::string(html::ClassOf(level))}});
    html::AddSign(level, rollUp);
    Element words = rollUp.Add("p");
    words.Add("b", NameOf(level), {{"aria-hidden", "true"}})
        .Text(" ")
        .Add("span", HeadlineOf(health, watching));
    AddTime(snapshot, header.Add("p", {{"class", "note"}}));
    if (watching != nullptr) {
        AddFailure(*watching, header);
        Element ways = header.Add("nav", {{"aria-label", "Other views"}}).Add("p", {{"class", "ways"}});
        ways.Add("a", "History", {{"href", "/history"}}).Text(" ");
        ways.Add("a", "JSON", {{"href", "/raid.json"}}).Text(" ");
        ways.Add("a", "XML", {{"href", "/raid.xml"}}).Text(" ");
        ways.Add("a", "Metrics", {{"href", "/metrics"}});
    }
}

/// What the service still holds against parts that nobody reports any more.
void AddStanding(const Watching& watching, Element page) {
    if (watching.standing.empty()) {
        return;
    }
    page.Add("h2", "Not well when it was last seen");
    Element list = page.Add("ul", {{"class", "findings"}});
    for (const inventory::Finding& finding : watching.standing) {
        Element item = list.Add("li", {{"class", html::ClassOf(finding.level)}});
        html::AddSign(finding.level, item);
        item.Add("span")
            .Add("b", finding.what)
            .Text(" " + PlaceOf(finding) + " ")
            .Add("small", IdentityOf(finding));
    }
}

void AddBody(const inventory::Snapshot& snapshot, const inventory::Health& health,
             const history::ServerHistory* history, const Watching* watching, Element page) {
    const std::vector<Controller>& controllers = snapshot.TheServer().controllers;
    const html::Places places(snapshot.TheServer(), health);
    const html::DriveLinesOfPage lines(snapshot, history);
    AddRollUp(snapshot, health, watching, page);
    Element main = page.Add("main");
    if (watching != nullptr) {
        AddStanding(*watching, main);
    }
    if (!health.findings.empty()) {
        html::AddFindings(health, places, main);
    }
    if (controllers.empty()) {
        main.Add("p", "The server told of no controller and no drive.");
    }
    for (const Controller& controller : controllers) {
        AddController(controller, controllers.size() > kMaxOpenControllers, places, lines, main);
    }
    if (history != nullptr) {
        html::AddEvents(*history, places, main);
    }
}

}  // namespace

std::string Html(const inventory::Snapshot& snapshot, const history::ServerHistory* history,
                 const Watching* watching) {
    const inventory::Health& health = snapshot.TheHealth();
    const std::string title = "RAID " + std::string(NameOf(LevelOf(health, watching))) +
                              OfHost(snapshot, " on ") + ": " + HeadlineOf(health, watching);
    return html::PageOf(
        title, [&](Element body) { AddBody(snapshot, health, history, watching, body); },
        watching == nullptr ? "" : watching->script);
}

}  // namespace views
