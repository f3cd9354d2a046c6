#include "Timeline.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "ScenarioError.h"
#include "Words.h"

namespace vdksim {

namespace fs = std::filesystem;

namespace {

constexpr const char* kTimelineFile = "timeline";
constexpr std::string_view kOwnFolder = ".";

bool HasTimeline(const fs::path& folder) {
    std::error_code error;
    return fs::exists(folder / kTimelineFile, error);
}

std::string Quoted(std::string_view word) {
    return "'" + std::string(word) + "'";
}

}  // namespace

Timeline Timeline::FromFile(const fs::path& path, const std::vector<fs::path>& folders) {
    std::ifstream in(path);
    Timeline timeline;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const auto words = WordsOf(line);
        if (words.empty()) {
            continue;
        }
        if (const std::string complaint = timeline.AddLine(words, folders); !complaint.empty()) {
            throw ScenarioError(kExitBadScenario,
                                path.string() + ":" + std::to_string(number) + ": " + complaint);
        }
    }
    if (!in.eof()) {
        throw ScenarioError(kExitNoScenario, path.string() + ": cannot be read");
    }
    if (timeline.m_Stages.empty()) {
        throw ScenarioError(kExitBadScenario, path.string() + ": has no stage");
    }
    return timeline;
}

std::string Timeline::AddLine(const std::vector<std::string_view>& words,
                              const std::vector<fs::path>& folders) {
    if (words.size() == 2 && words[0] == "count" && (words[1] == "seconds" || words[1] == "inquiries")) {
        m_CountsInquiries = words[1] == "inquiries";
        return "";
    }
    const bool isPeriod = words[0] == "repeat";
    const auto number = WholeNumber<std::uint32_t>(isPeriod ? words.back() : words.front());
    if (words.size() != 2 || !number) {
        return "expected 'N STAGE', 'repeat N', 'count seconds' or 'count inquiries'";
    }
    return isPeriod ? SetPeriod(*number) : AddStage(*number, std::string(words[1]), folders);
}

std::string Timeline::AddStage(std::uint32_t from, const std::string& name,
                               const std::vector<fs::path>& folders) {
    if (m_Period > 0) {
        return "no stage can stand behind 'repeat'";
    }
    if (m_Stages.empty() && from != 0) {
        return "the first stage has to begin at 0";
    }
    if (!m_Stages.empty() && from <= m_Stages.back().from) {
        return "a stage has to begin later than the one before it";
    }
    if (name == kOwnFolder) {
        m_Stages.push_back({from, {}});
        return "";
    }
    if (name == ".." || name.find('/') != std::string::npos) {
        return "a stage is a folder beside the timeline, or '.', not " + Quoted(name);
    }
    for (const fs::path& folder : folders) {
        std::error_code error;
        if (fs::is_directory(folder / name, error)) {
            m_Stages.push_back({from, folder / name});
            return "";
        }
    }
    return "there is no folder " + Quoted(name);
}

std::string Timeline::SetPeriod(std::uint32_t period) {
    if (m_Stages.empty() || period <= m_Stages.back().from) {
        return "'repeat' has to come later than the last stage, and behind it";
    }
    m_Period = period;
    return "";
}

const fs::path& Timeline::StageAt(const Moment& moment) const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(moment.sinceFirst).count();
    auto position = m_CountsInquiries ? moment.inquiry : static_cast<std::uint64_t>(seconds);
    if (m_Period > 0) {
        position %= m_Period;
    }
    const auto next = std::find_if(m_Stages.begin() + 1, m_Stages.end(),
                                   [position](const Stage& stage) { return stage.from > position; });
    return std::prev(next)->folder;
}

std::vector<fs::path> FoldersOf(const fs::path& scenario, const State& state, bool beginsInquiry) {
    std::vector<fs::path> folders{scenario};
    if (HasTimeline(scenario / "..")) {
        folders.push_back(fs::canonical(scenario / ".."));
    }
    if (HasTimeline(scenario)) {
        const Timeline timeline = Timeline::FromFile(scenario / kTimelineFile, folders);
        const fs::path stage = timeline.StageAt(beginsInquiry ? state.BeginInquiry() : state.LastInquiry());
        if (!stage.empty()) {
            folders.insert(folders.begin(), stage);
        }
    }
    return folders;
}

}  // namespace vdksim
