#include "HtmlHistory.h"

#include "Course.h"
#include "HistoryWords.h"
#include "HtmlPage.h"
#include "basics/Time.h"
#include "basics/Words.h"
#include "views/History.h"
#include "watch/SeenPart.h"

#include <algorithm>
#include <utility>

namespace views {
namespace html {
namespace {

using history::NumberedEvent;
using history::TimePoint;
using inventory::Controller;
using inventory::Drive;

constexpr std::string_view kUnknown = "\xE2\x80\x93";
constexpr std::size_t kMoments = 40;  // Their points take no more than an attribute may hold.
constexpr std::size_t kMaxEventsAtOnce = 20;
constexpr int kWidth = 120;
constexpr int kHeight = 24;

/// "M0,12L3,11L6,11": from moment to moment, with a gap where nothing is known.
std::string PathOf(const Course& course, const Extent& extent) {
    constexpr int kMargin = 2;
    std::string path;
    bool isDown = false;
    for (std::size_t moment = 0; moment < course.size(); ++moment) {
        if (!course[moment]) {
            isDown = false;
            continue;
        }
        const double span = extent.high - extent.low;
        const double share = span > 0 ? (*course[moment] - extent.low) / span : 0.5;
        const int across = static_cast<int>(moment) * kWidth / static_cast<int>(kMoments);
        const int down = kHeight - kMargin - static_cast<int>(share * (kHeight - 2 * kMargin));
        const std::string point = std::to_string(across) + "," + std::to_string(down);
        const bool isAlone = !isDown && (moment + 1 == course.size() || !course[moment + 1]);
        path += (isDown ? "L" : "M") + point + (isAlone ? "h1" : "");
        isDown = true;
    }
    return path;
}

void AddLine(const Course& course, const std::string& words, Element page) {
    const std::optional<Extent> extent = ExtentOf(course);
    if (!extent) {
        return;
    }
    const std::string box = "0 0 " + std::to_string(kWidth) + " " + std::to_string(kHeight);
    Element drawing = page.Add("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                                       {"class", "line"},
                                       {"viewBox", box},
                                       {"preserveAspectRatio", "none"},
                                       {"role", "img"},
                                       {"aria-label", words}});
    drawing.Add("path", {{"d", PathOf(course, *extent)}});
}

std::string WordsOf(const Extent& extent, const char* unit) {
    return extent.low == extent.high ? ShortNumber(extent.low) + unit
                                     : ShortNumber(extent.low) + " to " + ShortNumber(extent.high) + unit;
}

void AddLineCell(const Course& course, const char* unit, Element row) {
    const std::optional<Extent> extent = ExtentOf(course);
    if (!extent) {
        row.Add("td", kUnknown);
        return;
    }
    Element cell = row.Add("td");
    const std::string words = WordsOf(*extent, unit);
    if (extent->low != extent->high) {
        AddLine(course, words, cell);
    }
    cell.Text(" ").Add("small", extent->low == extent->high ? "always " + words : words);
}

std::string DaysOf(const history::ServerHistory& history) {
    const auto days = std::chrono::round<std::chrono::days>(history.until - history.since).count();
    return std::to_string(days) + (days == 1 ? " day" : " days");
}

void AddTime(TimePoint time, Element page) {
    page.Add("time", TimeText(time), {{"datetime", basics::UtcText(time)}});
}

void AddEvent(const watch::Event& event, const std::string& anchor, Element list) {
    const Look look = LookOf(event.level);
    Element item = list.Add("li", {{"class", ClassOf(look)}});
    AddSign(look, item);
    Element words = item.Add("span");
    AddTime(event.at, words);
    words.Text(" ").Add("b", NameOf(event.kind)).Text(" ");
    if (anchor.empty()) {
        words.Text(event.words);
    } else {
        words.Add("a", event.words, {{"href", "#" + anchor}});
    }
    if (!event.advice.empty()) {
        words.Text(" ").Add("small", event.advice);
    }
}

/// The latest first.
template <typename AnchorOf>
void AddEventList(const std::vector<NumberedEvent>& events, Element page, AnchorOf anchorOf) {
    const std::size_t shown = std::min(events.size(), kMaxEventsAtOnce);
    const auto add = [&](std::size_t first, std::size_t end, Element to) {
        Element list = to.Add("ul", {{"class", "findings"}});
        for (std::size_t index = first; index < end; ++index) {
            const watch::Event& event = events[events.size() - 1 - index].event;
            AddEvent(event, anchorOf(event), list);
        }
    };
    add(0, shown, page);
    if (shown < events.size()) {
        add(shown, events.size(),
            page.Add("details").Add("summary", "and " + std::to_string(events.size() - shown) + " before"));
    }
}

}  // namespace

DriveLinesOfPage::DriveLinesOfPage(const inventory::Snapshot& snapshot, const history::ServerHistory* history)
    : m_History(history) {
    if (history == nullptr) {
        return;
    }
    for (const watch::SeenPart& part : watch::PartsOf(snapshot)) {
        const auto lines = history->drives.find(part.key);
        if (part.drive != nullptr && lines != history->drives.end()) {
            m_Lines.emplace(part.drive, &lines->second);
        }
    }
}

bool DriveLinesOfPage::HasAny(const Controller& controller) const {
    return std::any_of(controller.drives.begin(), controller.drives.end(),
                       [this](const Drive& drive) { return m_Lines.contains(&drive); });
}

std::vector<std::string> DriveLinesOfPage::Titles() const {
    const std::string days = DaysOf(*m_History);
    return {"Temperature in " + days, "Errors in " + days};
}

void DriveLinesOfPage::AddCells(const Drive& drive, Element row) const {
    const auto lines = m_Lines.find(&drive);
    const auto courseOf = [&](std::vector<history::Reading> history::DriveLines::*readings) {
        return lines == m_Lines.end()
                   ? Course()
                   : CourseOf(lines->second->*readings, m_History->since, m_History->until, kMoments);
    };
    AddLineCell(courseOf(&history::DriveLines::temperature), " \xC2\xB0\x43", row);
    AddLineCell(Sum(courseOf(&history::DriveLines::mediaErrors), courseOf(&history::DriveLines::otherErrors)),
                "", row);
}

void AddEvents(const history::ServerHistory& history, const Places& places, Element page) {
    page.Add("h2", "What happened in " + DaysOf(history));
    if (history.events.empty()) {
        page.Add("p", "Nothing that is known.");
    }
    AddEventList(history.events, page, [&places](const watch::Event& event) {
        return event.about.part.empty() && event.about.group.empty() ? "" : places.AnchorOf(event.about);
    });
}

namespace {

/// As a value in a query.
std::string Encoded(std::string_view text) {
    constexpr int kHexadecimal = 16;
    std::string encoded;
    for (const char each : text) {
        if (basics::IsAlphanumeric(each) || each == '-' || each == '.' || each == '_' || each == '/') {
            encoded += each;
        } else {
            encoded += '%' + basics::Digits(static_cast<unsigned char>(each), 2, kHexadecimal);
        }
    }
    return encoded;
}

/// A table in a box of its own, which scrolls by itself where the screen is narrow.
Element AddTable(const std::string& name, std::initializer_list<const char*> columns, Element page) {
    Element box =
        page.Add("div", {{"class", "scroll"}, {"role", "region"}, {"aria-label", name}, {"tabindex", "0"}});
    Element table = box.Add("table");
    Element titles = table.Add("thead").Add("tr");
    for (const char* const column : columns) {
        titles.Add("th", column, {{"scope", "col"}});
    }
    return table.Add("tbody");
}

void AddState(const history::State& state, Element row) {
    Element cell = row.Add("td", {{"class", "state"}});
    AddSign(LookOf(state), cell);
    cell.Text(StateText(state));
}

void AddHead(const std::string& title, const std::string& host, const std::optional<TimePoint>& answered,
             Element page) {
    Element header = page.Add("header").Add("h1", title + (host.empty() ? "" : " on " + host));
    Element note = header.Add("p", {{"class", "note"}});
    if (answered) {
        note.Text("As of ");
        AddTime(*answered, note);
        note.Text(" UTC. Times are UTC.");
    } else {
        note.Text("The server has not answered yet.");
    }
}

void AddStates(const history::PartHistory& part, Element page) {
    page.Add("h2", "States");
    Element rows = AddTable("States", {"Since", "Until", "State", "Place"}, page);
    for (const history::State& state : part.states) {
        const bool stands = &state == &part.states.back() && part.answered && state.seen >= *part.answered;
        Element row = rows.Add("tr", {{"class", ClassOf(LookOf(state))}});
        AddTime(state.since, row.Add("td"));
        Element until = row.Add("td");
        stands ? void(until.Text("now")) : AddTime(state.seen, until);
        AddState(state, row);
        row.Add("td", state.place);
    }
}

void AddCounters(const history::PartHistory& part, Element page) {
    page.Add("h2", "Counters");
    Element rows = AddTable("Counters", {"Counter", "Last", "Lowest", "Highest", "Course"}, page);
    for (const history::Series* const series : MainFirst(part.series)) {
        const std::optional<Extent> extent = ExtentOf(series->readings);
        if (!extent) {
            continue;
        }
        const TimePoint until = std::max(series->readings.back().until, part.answered.value_or(part.since));
        Element row = rows.Add("tr").Add("th", series->counter, {{"scope", "row"}});
        for (const double number : {series->readings.back().last, extent->low, extent->high}) {
            row.Add("td", ShortNumber(number));
        }
        Element cell = row.Add("td");
        if (extent->low != extent->high) {
            AddLine(CourseOf(series->readings, part.since, until, kMoments), WordsOf(*extent, ""), cell);
        }
    }
}

}  // namespace
}  // namespace html

std::string HistoryHtml(const history::Overview& overview, const std::string& host,
                        const std::string& linkTo) {
    return html::PageOf("RAID parts" + (host.empty() ? "" : " on " + host), [&](html::Element page) {
        html::AddHead("RAID parts", host, overview.answered, page);
        html::Element main = page.Add("main").Add("p", CountsOf(overview) + ".");
        html::Element rows =
            html::AddTable("Parts", {"Part", "State", "Since", "Model", "Serial number"}, main);
        for (const history::Part& part : overview.parts) {
            html::Element row = rows.Add("tr", {{"class", html::ClassOf(LookOf(part.state))}});
            if (linkTo.empty()) {
                row.Add("th", PlaceOf(part.about), {{"scope", "row"}});
            } else {
                row.Add("th", {{"scope", "row"}})
                    .Add("a", PlaceOf(part.about), {{"href", linkTo + html::Encoded(part.key)}});
            }
            html::AddState(part.state, row);
            html::AddTime(part.state.since, row.Add("td"));
            row.Add("td", part.about.product).Add("td", part.about.serial);
        }
    });
}

std::string HistoryHtml(const history::PartHistory& part, const std::string& host) {
    const std::string place = PlaceOf(part.part.about);
    return html::PageOf("RAID history of " + place, [&](html::Element page) {
        html::AddHead("RAID history", host, part.answered, page);
        html::Element main = page.Add("main");
        main.Add("h2", place).Add("p", IdentityOf(part.part.about));
        main.Add("p", "Since " + TimeText(part.since) + " UTC.", {{"class", "note"}});
        html::AddStates(part, main);
        if (part.part.about.kind == inventory::PartKind::Drive) {
            html::AddCounters(part, main);
        }
        main.Add("h2", "Events");
        if (part.events.empty()) {
            main.Add("p", "None that is known.");
        }
        html::AddEventList(part.events, main, [](const watch::Event&) { return std::string(); });
    });
}

}  // namespace views
