#include "HistoryWords.h"

#include "basics/Time.h"

#include <algorithm>

namespace views {

std::string TimeText(history::TimePoint time) {
    return basics::UtcText(time, "%Y-%m-%d %H:%M:%S");
}

std::string StateText(const history::State& state) {
    if (!state.level) {
        return "not reported";
    }
    return state.words.empty() ? std::string(NameOf(*state.level)) : state.words;
}

Look LookOf(const history::State& state) {
    return state.level ? LookOf(*state.level) : Look::Unknown;
}

bool IsMain(const history::Series& series) {
    return !series.counter.starts_with("SMART ");
}

std::vector<const history::Series*> MainFirst(const std::vector<history::Series>& all) {
    std::vector<const history::Series*> sorted;
    sorted.reserve(all.size());
    for (const history::Series& series : all) {
        sorted.push_back(&series);
    }
    std::stable_partition(sorted.begin(), sorted.end(),
                          [](const history::Series* series) { return IsMain(*series); });
    return sorted;
}

std::string CountsOf(const history::Overview& overview) {
    const auto gone = std::count_if(overview.parts.begin(), overview.parts.end(),
                                    [](const history::Part& part) { return !part.state.level; });
    const std::size_t count = overview.parts.size();
    return std::to_string(count) + (count == 1 ? " part" : " parts") +
           (gone == 0 ? "" : ", " + std::to_string(gone) + " of them in no report any more");
}

}  // namespace views
