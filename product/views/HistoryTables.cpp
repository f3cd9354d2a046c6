#include "Course.h"
#include "Grid.h"
#include "HistoryWords.h"
#include "basics/Text.h"
#include "views/History.h"

#include <algorithm>

namespace views {
namespace {

using Fit = Grid::Fit;

constexpr std::size_t kIndentation = 2;
constexpr std::size_t kMoments = 30;

std::string Section(const std::string& title, const std::string& text, const TerminalStyle& style) {
    return '\n' + Heading(title, style) + '\n' + text;
}

/// A line of words, or as many as the terminal needs.
std::string Note(const std::string& words, std::size_t column, const TerminalStyle& style) {
    return std::string(column, ' ') + Wrapped(words, column, kIndentation, style) + '\n';
}

std::string StatesOf(const history::PartHistory& part, const TerminalStyle& style) {
    Grid grid({{"SINCE"}, {"UNTIL"}, {"STATE", Fit::Shorten}, {"PLACE", Fit::ShortenOrOmit}});
    const std::string place = PlaceOf(part.part.about);
    for (const history::State& state : part.states) {
        const bool stands = &state == &part.states.back() && part.answered && state.seen >= *part.answered;
        // Where it is now stands above.
        grid.AddRow({{TimeText(state.since)},
                     {stands ? "now" : TimeText(state.seen)},
                     {StateText(state), LookOf(state)},
                     {state.place == place ? "" : state.place, Look::Plain, true}});
    }
    return grid.IsEmpty() ? "  none is known\n" : grid.Text(style, kIndentation);
}

std::string CountersOf(const history::PartHistory& part, const TerminalStyle& style) {
    Grid grid({{"COUNTER", Fit::Shorten},
               {"LAST", Fit::Fixed, true},
               {"LOWEST", Fit::Fixed, true},
               {"HIGHEST", Fit::Fixed, true},
               {"LINE", Fit::Omit}});
    std::size_t unchanged = 0;
    for (const history::Series* const series : MainFirst(part.series)) {
        const std::optional<Extent> extent = ExtentOf(series->readings);
        if (!extent || (!IsMain(*series) && extent->low == extent->high)) {
            ++unchanged;
            continue;
        }
        const history::TimePoint until =
            std::max(series->readings.back().until, part.answered.value_or(part.since));
        const std::string line = BlockLine(CourseOf(series->readings, part.since, until, kMoments));
        grid.AddRow({{series->counter},
                     {ShortNumber(series->readings.back().last)},
                     {ShortNumber(extent->low)},
                     {ShortNumber(extent->high)},
                     {extent->low == extent->high ? "" : line, Look::Plain, true}});
    }
    std::string text = grid.IsEmpty() ? "  none is known\n" : grid.Text(style, kIndentation);
    if (unchanged > 0) {
        text += Note(std::to_string(unchanged) + (unchanged == 1 ? " other has" : " others have") +
                         " not changed; --format json has " + (unchanged == 1 ? "it" : "them"),
                     kIndentation, style);
    }
    return text;
}

std::string EventsOf(const history::PartHistory& part, const TerminalStyle& style) {
    std::string text;
    for (const history::NumberedEvent& each : part.events) {
        text += EventLine(each.event, style);
    }
    return text.empty() ? "  none\n" : EventsTitle(style) + text;
}

}  // namespace

std::string HistoryTable(const history::Overview& overview, const TerminalStyle& style) {
    std::string text =
        Note("As of " + (overview.answered ? TimeText(*overview.answered) + " UTC" : "no answer yet") + ": " +
                 CountsOf(overview),
             0, style);
    Grid grid({{"PART", Fit::Shorten},
               {"STATE", Fit::Shorten},
               {"SINCE (UTC)"},
               {"MODEL", Fit::Omit},
               {"SERIAL NUMBER", Fit::Omit}});
    for (const history::Part& part : overview.parts) {
        grid.AddRow({{PlaceOf(part.about)},
                     {StateText(part.state), LookOf(part.state)},
                     {TimeText(part.state.since)},
                     {part.about.product, Look::Plain, true},
                     {part.about.serial, Look::Plain, true}});
    }
    return text + (grid.IsEmpty() ? "" : '\n' + grid.Text(style, 0));
}

std::string HistoryTable(const history::PartHistory& part, const TerminalStyle& style) {
    const history::State& state = part.part.state;
    const std::string identity = IdentityOf(part.part.about);
    const std::string title = PlaceOf(part.part.about) + (identity.empty() ? "" : " (" + identity + ")");
    std::string text = Heading(Wrapped(basics::Printable(title), 0, kIndentation, style), style) + '\n';
    const std::string words = basics::Printable(StateText(state));
    const std::size_t column = basics::WidthOf(words);
    text += Colored(words, LookOf(state), style) +
            Wrapped(" since " + TimeText(state.since) +
                        (part.answered ? ", as of " + TimeText(*part.answered) : "") + " UTC",
                    column, kIndentation, style) +
            '\n';
    const std::string since = " since " + TimeText(part.since) + " UTC";
    text += Section("States" + since, StatesOf(part, style), style);
    if (part.part.about.kind == inventory::PartKind::Drive) {
        text += Section("Counters" + since, CountersOf(part, style), style);
    }
    return text + Section("Events" + since, EventsOf(part, style), style);
}

namespace {

// Times, levels and kinds have a width of their own, so that events which come one by one stand below each
// other.
constexpr std::size_t kEventLevelWidth = 10;
constexpr std::size_t kEventKindWidth = 16;
constexpr std::size_t kTimeWidth = 21;

}  // namespace

std::string EventsTitle(const TerminalStyle& style) {
    const std::string title = basics::PadRight("TIME (UTC)", kTimeWidth) +
                              basics::PadRight("LEVEL", kEventLevelWidth) +
                              basics::PadRight("EVENT", kEventKindWidth) + "WHAT";
    return (style.columns == 0 ? title : basics::Shortened(title, style.columns)) + '\n';
}

std::string EventLine(const watch::Event& event, const TerminalStyle& style) {
    constexpr std::size_t kFront = kTimeWidth + kEventLevelWidth + kEventKindWidth;
    const bool isNarrow = style.columns != 0 && style.columns < kFront + kEventKindWidth;
    const std::string time = basics::PadRight(TimeText(event.at), kTimeWidth);
    const std::string level(NameOf(event.level));
    const std::string kind(NameOf(event.kind));
    const std::string words = basics::Printable(event.words);
    if (isNarrow) {
        return time + Colored(level, LookOf(event.level), style) + '\n' +
               Note(kind + ": " + words, kIndentation, style);
    }
    return time + Colored(basics::PadRight(level, kEventLevelWidth), LookOf(event.level), style) +
           basics::PadRight(kind, kEventKindWidth) + Wrapped(words, kFront, kFront, style) + '\n';
}

}  // namespace views
