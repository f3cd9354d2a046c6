#include "Readme.h"

#include "basics/Text.h"
#include "basics/Time.h"
#include "basics/Words.h"

#include <algorithm>
#include <chrono>
#include <tuple>

namespace capture {
namespace {

using basics::OneLine;

constexpr std::string_view kTitle = "# Capture of a RAID server\n";
constexpr std::string_view kFromScenario = "Recorded by `mngsrvraid capture` from the scenario ";
constexpr std::string_view kFromAScenario = "Recorded by `mngsrvraid capture` from a scenario";
constexpr std::string_view kScenario = "the scenario ";
constexpr std::string_view kNotRedacted =
    "- Not redacted: serial numbers, addresses and names are in it as the tool told them.\n";
constexpr std::string_view kRedacted =
    "- Redacted: serial numbers, world-wide names, addresses, host names and the like are replaced by "
    "words.\n";
constexpr std::string_view kListTitle = "\n## What was replaced\n";
constexpr std::string_view kListIndent = "    ";
constexpr std::string_view kPath = "(path)";
// The tool's own place is the same everywhere.
constexpr std::string_view kToolFolder = "/opt/zorbalt/vdk";

std::string Known(const std::vector<std::string>& texts) {
    const std::string joined = basics::Joined(texts);
    return joined.empty() ? "not known" : OneLine(joined);
}

std::string Section(const std::string& title, const std::vector<std::string>& lines) {
    std::string text = lines.empty() ? "" : "\n## " + title + "\n\n";
    for (const std::string& line : lines) {
        text += "- " + OneLine(line) + "\n";
    }
    return text;
}

void ReplaceAll(std::string& text, std::string_view part, std::string_view other) {
    for (std::size_t at = text.find(part); at != text.npos; at = text.find(part, at + other.size())) {
        text.replace(at, part.size(), other);
    }
}

/// "from the scenario small, 2031-04-05 06:07:08 UTC."
void HideScenario(std::string& readme) {
    const std::size_t source = readme.find(kFromScenario);
    if (source == readme.npos) {
        return;
    }
    const std::size_t begin = source + kFromScenario.size();
    const std::size_t comma = readme.rfind(", ", readme.find('\n', begin));
    if (comma == readme.npos || comma < begin) {
        return;
    }
    const std::string name = readme.substr(begin, comma - begin);
    readme.replace(source, comma - source, kFromAScenario);
    if (!name.empty()) {
        ReplaceAll(readme, std::string(kScenario) + name, kScenario.substr(0, kScenario.size() - 1));
    }
}

bool IsPathAt(std::string_view text, std::size_t at) {
    constexpr std::string_view kBefore = " \t\n(\"'`=:,";
    std::size_t begin = at;
    while (begin > 0 && (text[begin - 1] == '.' || text[begin - 1] == '~')) {
        --begin;
    }
    const bool isStart = begin == 0 || kBefore.find(text[begin - 1]) != kBefore.npos;
    const bool isNamed = at + 1 < text.size() && kBefore.find(text[at + 1]) == kBefore.npos;
    return text[at] == '/' && isStart && isNamed && !text.substr(at).starts_with(kToolFolder);
}

/// Where a path ends that begins here. A word with a slash behind it belongs to it: "/home/me and/you".
std::size_t EndOfPath(std::string_view text, std::size_t at) {
    constexpr std::string_view kEnds = " \t\n\"'`);";
    std::size_t end = std::min(text.find_first_of(kEnds, at), text.size());
    while (end < text.size() && text[end] == ' ') {
        const std::size_t next = std::min(text.find_first_of(kEnds, end + 1), text.size());
        const std::string_view word = text.substr(end + 1, next - end - 1);
        if (word.find('/') == word.npos || word.starts_with('/')) {
            break;
        }
        end = next;
    }
    while (end > at && (text[end - 1] == ':' || text[end - 1] == ',' || text[end - 1] == '.')) {
        --end;
    }
    return end;
}

std::string WithoutPaths(std::string_view text) {
    std::string hidden;
    for (std::size_t at = 0; at < text.size();) {
        if (IsPathAt(text, at)) {
            while (!hidden.empty() && (hidden.back() == '.' || hidden.back() == '~')) {
                hidden.pop_back();
            }
            hidden += kPath;
            at = EndOfPath(text, at);
        } else {
            hidden += text[at++];
        }
    }
    return hidden;
}

std::optional<Redaction::Replacement> ParseLine(std::string_view line) {
    const std::vector<std::string_view> words = basics::Words(line);
    if (!line.starts_with(kListIndent) || words.size() != 2) {
        return std::nullopt;
    }
    const auto word = ParseWord(words[0]);
    const auto places = basics::NumberFrom<std::size_t>(words[1]);
    return word && places ? std::optional(Redaction::Replacement{*word, *places}) : std::nullopt;
}

std::string Counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

/// "2 serial numbers, in 9 places", for each kind that is in the list.
std::vector<std::string> LinesOfKinds(const Replacements& list) {
    std::vector<std::string> lines;
    for (const Kind kind : AllKinds()) {
        std::size_t values = 0;
        std::size_t places = 0;
        for (const Redaction::Replacement& each : list) {
            values += each.word.kind == kind ? 1 : 0;
            places += each.word.kind == kind ? each.places : 0;
        }
        if (values > 0) {
            const KindWords& words = WordsOf(kind);
            lines.push_back(Counted(values, words.one, words.many) + ", in " +
                            Counted(places, "place", "places"));
        }
    }
    return lines;
}

std::string LinesOfWords(const Replacements& list) {
    std::string text;
    for (const Redaction::Replacement& each : list) {
        text.append(kListIndent).append(WordFor(each.word)).append("  ");
        text.append(std::to_string(each.places)).append("\n");
    }
    return text;
}

}  // namespace

std::string ReadmeText(const Account& account) {
    std::string text = std::string(kTitle) + "\n";
    text += account.scenario.empty() ? "Recorded by `mngsrvraid capture` from this server's tool"
                                     : std::string(kFromScenario) + OneLine(account.scenario);
    text += ", " + basics::UtcText(std::chrono::system_clock::now(), "%Y-%m-%d %H:%M:%S UTC") + ".\n\n";
    text += account.host.empty() ? "" : "- Host: " + OneLine(account.host) + "\n";
    text += "- Controllers: " + Known(account.controllers) + "\n";
    text += "- Version of the tool: " + Known(account.versions) + "\n";
    text += "- Drives asked for: " + std::to_string(account.drives) + "\n";
    text += kNotRedacted;
    text +=
        account.failures.empty() && account.missing.empty()
            ? "- Complete: all that could be asked was asked.\n"
            : "- Not complete: what failed or is missing stands below. What was answered is here, and can be "
              "used with --scenario.\n";
    return text + Section("What failed", account.failures) +
           Section("What is not as it was", account.changes) + Section("What is missing", account.missing);
}

bool IsReadmeOfCapture(std::string_view readme) {
    return readme.starts_with(kTitle);
}

std::string WithoutNames(std::string_view readme, const std::vector<std::string>& paths) {
    std::string text(readme);
    if (!IsReadmeOfCapture(text)) {
        return text;
    }
    HideScenario(text);
    for (const std::string& path : paths) {
        if (path.size() > 1) {
            ReplaceAll(text, OneLine(path), kPath);
        }
    }
    ReplaceAll(text, kNotRedacted, kRedacted);
    return WithoutPaths(text);
}

ListedReadme TakeList(std::string_view readme) {
    ListedReadme taken;
    const std::size_t begin = readme.find(kListTitle);
    if (begin == readme.npos) {
        return {std::string(readme), {}};
    }
    const std::size_t end = std::min(readme.find("\n## ", begin + kListTitle.size()), readme.size());
    for (const std::string_view line : basics::Words(readme.substr(begin, end - begin), "\n")) {
        if (const auto replacement = ParseLine(line)) {
            taken.list.push_back(*replacement);
        }
    }
    taken.text = std::string(readme.substr(0, begin)) + std::string(readme.substr(end));
    return taken;
}

std::string PutList(const ListedReadme& readme) {
    std::string text = readme.text + std::string(kListTitle) + "\n";
    if (readme.list.empty()) {
        return text + "- nothing: no such value was found\n";
    }
    for (const std::string& line : LinesOfKinds(readme.list)) {
        text += "- " + line + "\n";
    }
    return text + "\n" + LinesOfWords(readme.list);
}

std::string ListForScreen(const Replacements& list) {
    constexpr std::size_t kMostLines = 40;
    if (list.empty()) {
        return "replaced: nothing\n";
    }
    std::string text;
    for (const std::string& line : LinesOfKinds(list)) {
        text += "replaced: " + line + "\n";
    }
    return text + (list.size() <= kMostLines ? LinesOfWords(list)
                                             : "each of them is listed in " + std::string(kReadme) + "\n");
}

Replacements Merged(Replacements list, const Replacements& more) {
    const auto placeOf = [](const Redaction::Replacement& each) {
        return std::pair(each.word.kind, each.word.number);
    };
    list.insert(list.end(), more.begin(), more.end());
    std::stable_sort(list.begin(), list.end(),
                     [&](const auto& left, const auto& right) { return placeOf(left) < placeOf(right); });
    return list;
}

}  // namespace capture
