#include "Instructions.h"

#include <csignal>
#include <fstream>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "ScenarioError.h"
#include "Words.h"

namespace vdksim {

namespace {

using Words = std::vector<std::string_view>;

constexpr std::pair<std::string_view, int> kSignals[] = {
    {"HUP", SIGHUP},   {"INT", SIGINT},   {"QUIT", SIGQUIT}, {"ILL", SIGILL},   {"TRAP", SIGTRAP},
    {"ABRT", SIGABRT}, {"BUS", SIGBUS},   {"FPE", SIGFPE},   {"KILL", SIGKILL}, {"USR1", SIGUSR1},
    {"SEGV", SIGSEGV}, {"USR2", SIGUSR2}, {"PIPE", SIGPIPE}, {"ALRM", SIGALRM}, {"TERM", SIGTERM},
    {"XCPU", SIGXCPU}, {"XFSZ", SIGXFSZ}, {"SYS", SIGSYS},
};

// Only signals that end a process; "SIGKILL" is taken as well as "KILL".
bool ReadSignal(std::string_view word, int& signal) {
    if (word.starts_with("SIG")) {
        word.remove_prefix(3);
    }
    for (const auto& [name, number] : kSignals) {
        if (word == name) {
            signal = number;
            return true;
        }
    }
    return false;
}

bool ReadStatus(std::string_view word, int& status) {
    const auto number = WholeNumber<std::uint8_t>(word);
    status = number.value_or(0);
    return number.has_value();
}

// "200", "64K", "16M", "1G": a count, with the powers of 1024 for the big ones.
bool ReadCount(std::string_view word, std::uint64_t& count) {
    unsigned shift = 0;
    if (const auto unit = std::string_view("KMG").find(word.empty() ? '\0' : word.back());
        unit != std::string_view::npos) {
        shift = 10 * (static_cast<unsigned>(unit) + 1);
        word.remove_suffix(1);
    }
    const auto number = WholeNumber<std::uint64_t>(word);
    if (!number || *number > (std::numeric_limits<std::uint64_t>::max() >> shift)) {
        return false;
    }
    count = *number << shift;
    return true;
}

// "2" or "0.25"; a day is the most, so that the result always fits the clocks.
bool ReadSeconds(std::string_view word, Instructions::Seconds& seconds) {
    constexpr double kDay = 86400;
    double number = 0;
    const char* end = word.data() + word.size();
    const auto [stopped, error] = std::from_chars(word.data(), end, number, std::chars_format::fixed);
    if (error != std::errc{} || stopped != end || !(number >= 0 && number <= kDay)) {
        return false;
    }
    seconds = Instructions::Seconds(number);
    return true;
}

// One instruction: its name, how many words may follow, and what they change. Apply is false when a word
// behind the name cannot be read.
struct Rule {
    std::string_view name;
    std::size_t fewest;
    std::size_t most;
    bool (*apply)(const Words& words, Instructions& to);
};

constexpr Rule kRules[] = {
    {"exit", 1, 1,
     [](const Words& words, Instructions& to) { return ReadStatus(words[1], to.exitStatus.emplace()); }},
    {"pass-first", 1, 1,
     [](const Words& words, Instructions& to) { return ReadCount(words[1], to.passFirst); }},
    {"fail-first", 1, 2,
     [](const Words& words, Instructions& to) {
         to.failStatus = 1;
         return ReadCount(words[1], to.failFirst) &&
                (words.size() < 3 || ReadStatus(words[2], to.failStatus));
     }},
    {"marker", 0, 1,
     [](const Words& words, Instructions& to) {
         to.marker = words.size() > 1 ? words[1] : std::string_view{};
         return true;
     }},
    {"signal", 1, 2,
     [](const Words& words, Instructions& to) {
         to.takesShellAlong = words.size() > 2;
         return ReadSignal(words[1], to.signal) && (!to.takesShellAlong || words[2] == "shell");
     }},
    {"stop", 0, 0, [](const Words&, Instructions& to) { return to.stop = true; }},
    {"sleep", 1, 1, [](const Words& words, Instructions& to) { return ReadSeconds(words[1], to.delay); }},
    {"endless", 0, 0, [](const Words&, Instructions& to) { return to.endless = true; }},
    {"repeat", 1, 1, [](const Words& words, Instructions& to) { return ReadCount(words[1], to.repeat); }},
    {"bytes", 1, 1,
     [](const Words& words, Instructions& to) { return ReadCount(words[1], to.bytes.emplace()); }},
    {"truncate", 1, 1,
     [](const Words& words, Instructions& to) { return ReadCount(words[1], to.truncate.emplace()); }},
    {"stderr", 0, 0, [](const Words&, Instructions& to) { return to.toStandardError = true; }},
    {"close-stdout", 0, 0, [](const Words&, Instructions& to) { return to.closeOutput = true; }},
    {"spawn-holder", 1, 1,
     [](const Words& words, Instructions& to) { return ReadSeconds(words[1], to.holdOutput); }},
    {"spawn-writer", 1, 1,
     [](const Words& words, Instructions& to) { return ReadSeconds(words[1], to.keepWriting); }},
};

// What is wrong with the line, or "" when it was taken.
std::string Apply(const Words& words, Instructions& to) {
    for (const Rule& rule : kRules) {
        if (words[0] != rule.name) {
            continue;
        }
        const std::string name(rule.name);
        if (words.size() - 1 < rule.fewest) {
            return "'" + name + "' needs a value";
        }
        if (words.size() - 1 > rule.most) {
            return "too many words behind '" + name + "'";
        }
        if (!rule.apply(words, to)) {
            std::string values;
            for (const std::string_view value : Words(words.begin() + 1, words.end())) {
                values.append(values.empty() ? "" : " ").append(value);
            }
            return std::string("'").append(name).append("' does not take '").append(values).append("'");
        }
        return "";
    }
    return "unknown instruction '" + std::string(words[0]) + "'";
}

}  // namespace

Instructions Instructions::FromFile(const std::filesystem::path& path) {
    std::ifstream in(path);
    Instructions instructions;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const Words words = WordsOf(line);
        if (words.empty()) {
            continue;
        }
        if (const std::string complaint = Apply(words, instructions); !complaint.empty()) {
            throw ScenarioError(kExitBadScenario,
                                path.string() + ":" + std::to_string(number) + ": " + complaint);
        }
    }
    if (!in.eof()) {
        throw ScenarioError(kExitNoScenario, path.string() + ": cannot be read");
    }
    return instructions;
}

}  // namespace vdksim
