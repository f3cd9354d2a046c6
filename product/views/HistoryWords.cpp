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

std::string CountsOf(const history::Overview& overview) {
    const auto gone = std::count_if(overview.parts.begin(), overview.parts.end(),
                                    [](const history::Part& part) { return !part.state.level; });
    const std::size_t count = overview.parts.size();
    return std::to_string(count) + (count == 1 ? " part" : " parts") +
           (gone == 0 ? "" : ", " + std::to_string(gone) + " of them in no report any more");
}

}  // namespace views
