#include "Options.h"

#include "CommandLine.h"
#include "Recall.h"
#include "basics/HostName.h"
#include "basics/Words.h"

#include "qel/portable/CTraceOutput.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace command {
namespace {

struct FormatName {
    std::string_view name;
    Options::Format format;
};
constexpr FormatName kFormats[] = {
    {"xml", Options::Format::Xml},     {"tree", Options::Format::Tree},
    {"table", Options::Format::Table}, {"json", Options::Format::Json},
    {"html", Options::Format::Html},   {"prometheus", Options::Format::Prometheus},
};

constexpr const char* kHistory = "/var/lib/mngsrvraid/history.db";
constexpr const char* kUsualSince = "30d";

void RejectEmpty(const char* option, const std::optional<std::string>& value) {
    if (value && value->empty()) {
        Reject(std::string(option) + " needs a path that is not empty");
    }
}

/// What was typed, looked at value by value: what it means, and what does not go together.
class Checks final {
  public:
    explicit Checks(Typed typed) : m_Typed(std::move(typed)) {}
    Checks(const Checks&) = delete;
    Checks& operator=(const Checks&) = delete;

    [[nodiscard]] Options Checked() {
        CheckValues();
        ChooseAction();
        return m_Options;
    }

  private:
    void CheckValues() {
        RejectEmpty("--scenario", m_Options.scenario);
        RejectEmpty("--install-dir", m_Options.installDir);
        RejectEmpty("--trace-file", m_Options.traceFile);
        RejectEmpty("--output", m_Options.output);
        RejectEmpty("--document", m_Options.document);
        RejectEmpty("--expect", m_Options.expect);
        RejectEmpty("--save", m_Typed.save);
        RejectEmpty("--history", m_Options.history);
        RejectEmpty("--config", m_Options.config);
        ChooseLimits();
        if (m_Options.output == "-") {
            m_Options.output.reset();
        }
        m_Options.traceLevels = m_Options.traceFile ? CTraceOutput::ALL_LEVELS : 0;
        if (m_Typed.trace) {
            const auto levels = ParseTraceLevels(*m_Typed.trace);
            if (!levels) {
                Reject("--trace takes any of 1,2,4,8 separated by commas, or all, not " +
                       Quoted(*m_Typed.trace));
            }
            m_Options.traceLevels = *levels;
        }
    }

    void ChooseAction() {
        if (m_Typed.asksForVersion) {
            m_Options.action = Options::Action::Version;
            return;
        }
        if (!m_Typed.action) {
            Reject("a subcommand is missing: " + m_Typed.subcommands);
        }
        m_Options.action = *m_Typed.action;
        ChooseFormat();
        ChooseTimeLimit();
        ChooseHost();
        ChooseJobs();
        switch (m_Options.action) {
            case Options::Action::Smart:
            case Options::Action::GetPDInfo:
                ChooseDrive();
                break;
            case Options::Action::Show:
            case Options::Action::Health:
                CheckDocument();
                CheckPageHistory();
                if (m_Options.limits.mediaErrorGrowth && !m_Options.expect) {
                    Reject("--max-media-error-growth needs to know since when: --expect FILE");
                }
                break;
            case Options::Action::Expect:
                CheckDocument();
                ChooseSaving();
                break;
            case Options::Action::Capture:
                Need(m_Options.folder, "capture needs a folder to make: DIR");
                CheckRedactWords();
                break;
            case Options::Action::Redact:
                Need(m_Options.folder, "redact needs the folder of a capture: DIR");
                CheckRedactWords();
                break;
            case Options::Action::Diff:
                CheckSides();
                break;
            case Options::Action::History:
            case Options::Action::Events:
                ChooseRecalling();
                break;
            case Options::Action::TestAlert:
                if (m_Options.output) {
                    Reject(
                        "test-alert prints what each channel says as it comes, which --output does not "
                        "store");
                }
                break;
            default:
                break;
        }
    }

    static void Need(const std::string& argument, const char* complaint) {
        if (argument.empty()) {
            Reject(complaint);
        }
    }

    void CheckSides() const {
        for (const std::string& side : {m_Options.before, m_Options.after}) {
            Need(side, "diff needs two saved documents, captures or scenarios: OLD NEW");
        }
        if (m_Options.before == "-" && m_Options.after == "-") {
            Reject("standard input is one document: - can be OLD or NEW, not both");
        }
        if (m_Options.scenario) {
            Reject("--scenario does not go with diff, which takes a scenario as OLD or NEW");
        }
    }

    void CheckPageHistory() {
        if (m_Options.history && m_Options.format != Options::Format::Html) {
            Reject("--history of show goes with --format html alone");
        }
        m_Options.since = SinceFrom(kUsualSince, std::chrono::system_clock::now());
    }

    void ChooseRecalling() {
        if (m_Options.scenario) {
            Reject("--scenario is a server to ask, which " + m_Options.subcommand + " leaves alone");
        }
        if (m_Options.isFollowing && m_Options.output) {
            Reject("--follow prints events as they come, which --output does not store");
        }
        const std::string since = m_Typed.since.value_or(kUsualSince);
        m_Options.since = SinceFrom(since, std::chrono::system_clock::now());
        if (!m_Options.since) {
            Reject("--since takes a time such as 30d, 12h, 90m, 2031-04-05 or 2031-04-05T06:07:08Z, not " +
                   Quoted(since));
        }
        m_Options.history = m_Options.history.value_or(kHistory);
        m_Options.part = basics::Joined(m_Typed.part, " ");
    }

    void ChooseRecallingFormat(std::string_view formats) {
        const std::string format = m_Typed.format.value_or("table");
        const auto* const found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                               [&](const FormatName& each) { return each.name == format; });
        if (found == std::end(kFormats) || formats.find(format) == std::string_view::npos) {
            Reject("--format of " + m_Options.subcommand + " takes " + std::string(formats) + ", not " +
                   Quoted(format));
        }
        if (m_Options.isCompact) {
            Reject("--compact does not go with " + m_Options.subcommand);
        }
        m_Options.format = found->format;
    }

    void ChooseDiffFormat() {
        const std::string format = m_Typed.format.value_or("table");
        if (format != "table" && format != "json") {
            Reject("--format of diff takes table or json, not " + Quoted(format));
        }
        if (m_Options.isCompact) {
            Reject("--compact does not go with diff");
        }
        m_Options.format = format == "json" ? Options::Format::Json : Options::Format::Table;
    }

    void ChooseFormat() {
        switch (m_Options.action) {
            case Options::Action::Show:
            case Options::Action::Smart:
                m_Options.format = Options::Format::Table;
                break;
            case Options::Action::GetInfo:
            case Options::Action::GetPDInfo:
                m_Options.format = Options::Format::Xml;
                break;
            case Options::Action::Diff:
                ChooseDiffFormat();
                return;
            case Options::Action::History:
                ChooseRecallingFormat("table, json or html");
                return;
            case Options::Action::Events:
                ChooseRecallingFormat("table or json");
                return;
            default:
                if (m_Typed.format) {
                    Reject("--format does not go with " + m_Options.subcommand);
                }
                RejectCompact();
                return;
        }
        if (!m_Typed.format) {
            RejectCompact();
            return;
        }
        const auto* const found =
            std::find_if(std::begin(kFormats), std::end(kFormats),
                         [this](const FormatName& each) { return each.name == *m_Typed.format; });
        if (found == std::end(kFormats)) {
            Reject("--format takes xml, tree, table, json, html or prometheus, not " +
                   Quoted(*m_Typed.format));
        }
        m_Options.format = found->format;
        RejectCompact();
    }

    void RejectCompact() const {
        if (m_Options.isCompact && m_Options.format != Options::Format::Json) {
            Reject("--compact goes with --format json alone");
        }
    }

    void ChooseTimeLimit() {
        // A monitoring system that waits for a minute is to hear the reason, not to give up before.
        constexpr unsigned kHealthSeconds = 50;
        constexpr unsigned kSeconds = 300;
        constexpr unsigned kMostSeconds = 1'000'000;
        unsigned seconds = m_Options.action == Options::Action::Health ? kHealthSeconds : kSeconds;
        if (m_Typed.timeout) {
            const std::optional<unsigned> given = basics::NumberFrom<unsigned>(*m_Typed.timeout);
            if (!given || *given > kMostSeconds) {
                Reject("--timeout takes whole seconds up to 1000000, or 0 for none, not " +
                       Quoted(*m_Typed.timeout));
            }
            seconds = *given;
        }
        m_Options.timeLimit = std::chrono::seconds(seconds);
    }

    void ChooseJobs() {
        constexpr std::size_t kMostJobs = 64;
        if (!m_Typed.jobs) {
            return;
        }
        if (!m_Options.hasSmart) {
            Reject("--jobs goes with --smart alone");
        }
        m_Options.jobs = basics::NumberFrom<std::size_t>(*m_Typed.jobs).value_or(0);
        if (m_Options.jobs < 1 || m_Options.jobs > kMostJobs) {
            Reject("--jobs takes a number from 1 to " + std::to_string(kMostJobs) + ", not " +
                   Quoted(*m_Typed.jobs));
        }
    }

    void ChooseLimits() {
        const auto numberOf = [this](std::size_t limit) -> std::optional<std::uint32_t> {
            const auto& [name, text] = m_Typed.limits.at(limit);
            const auto number = basics::NumberFrom<std::uint32_t>(text.value_or("0"));
            if (!number) {
                Reject(std::string(name) + " takes a whole number, not " + Quoted(*text));
            }
            return text ? number : std::nullopt;
        };
        m_Options.limits = {numberOf(0), numberOf(1), numberOf(2), numberOf(3)};
    }

    void ChooseSaving() {
        if (!m_Typed.save || m_Options.output) {
            Reject(m_Typed.save ? "expect takes --save FILE, not --output"
                                : "expect needs a file to save to: --save FILE");
        }
        if (m_Typed.save != "-") {
            m_Options.output = m_Typed.save;
        }
        const std::optional<std::string>& until = m_Options.acceptUntil;
        if (until.has_value() != m_Options.acceptReason.has_value()) {
            Reject("--accept-until DAY and --reason TEXT go together");
        }
        if (until && (!inventory::IsDay(*until) || m_Options.acceptReason->empty())) {
            Reject("--accept-until takes a day such as 2031-06-30, and --reason some words");
        }
    }

    // What is asked in this server's place is another one.
    void ChooseHost() {
        const bool isOther = m_Options.action == Options::Action::Redact ||
                             (m_Options.history && m_Options.action != Options::Action::Show);
        const bool isThisServer = !m_Options.scenario && !m_Options.document && !isOther;
        m_Options.host = m_Typed.host.value_or(isThisServer ? basics::HostName() : "");
    }

    void CheckDocument() const {
        if (m_Options.document && m_Options.scenario) {
            Reject("--scenario is a server to ask, which --document leaves alone");
        }
        if (m_Options.hasSmart && m_Options.document) {
            Reject("--smart asks the server, which --document leaves alone");
        }
        if (m_Options.hasSmart && m_Options.format == Options::Format::Xml) {
            Reject(
                "--smart has no xml: the document of a server holds none; get-pd-info has it drive by drive");
        }
    }

    void CheckRedactWords() const {
        constexpr std::size_t kShortest = 3;
        const bool isRedacted = m_Options.isRedacted || m_Options.action == Options::Action::Redact;
        if (!isRedacted && !m_Options.redactWords.empty()) {
            Reject("--redact-word goes with --redact");
        }
        for (const std::string& word : m_Options.redactWords) {
            const bool hasLetter = std::any_of(word.begin(), word.end(), [](char each) {
                return basics::IsAlphanumeric(each) || static_cast<signed char>(each) < 0;
            });
            if (word.size() < kShortest || !hasLetter) {
                Reject("--redact-word takes a word of three characters or more, not " + Quoted(word));
            }
        }
    }

    void ChooseDrive() {
        if (!m_Typed.drive.back() && m_Typed.drive[1]) {  // as show prints it: 252:3
            if (const std::size_t colon = m_Typed.drive[1]->find(':'); colon != std::string::npos) {
                m_Typed.drive[2] = m_Typed.drive[1]->substr(colon + 1);
                m_Typed.drive[1]->resize(colon);
            }
        }
        if (!m_Typed.drive.back()) {
            Reject(m_Options.subcommand + " needs a drive: CTRL ENCL PD, or CTRL ENCL:PD");
        }
        m_Options.parameters = {
            {"CTRL", *m_Typed.drive[0]}, {"ENCL", *m_Typed.drive[1]}, {"PD", *m_Typed.drive[2]}};
    }

    Typed m_Typed;
    Options& m_Options = m_Typed.options;
};

}  // namespace

Options ParseOptions(int count, const char* const* words) {
    Typed typed = ReadCommandLine(count, words);
    if (typed.asksForHelp) {
        typed.options.action = Options::Action::Help;
        return typed.options;
    }
    return Checks(std::move(typed)).Checked();
}

bool AsksForHealth(int count, const char* const* words) {
    return std::any_of(words + std::min(count, 1), words + count,
                       [](const char* word) { return word == std::string_view("health"); });
}

std::optional<unsigned> ParseTraceLevels(std::string_view text) {
    if (text == "all") {
        return CTraceOutput::ALL_LEVELS;
    }
    unsigned levels = 0;
    for (;;) {
        const std::string_view level = text.substr(0, text.find(','));
        if (level.size() != 1 || std::string_view("1248").find(level) == std::string_view::npos) {
            return std::nullopt;
        }
        levels |= static_cast<unsigned>(level.front() - '0');
        if (level.size() == text.size()) {
            return levels;
        }
        text.remove_prefix(level.size() + 1);
    }
}

bool IsDriveNumber(std::string_view text) {
    return basics::NumberFrom<std::int32_t>(text) && !text.starts_with('-');
}

}  // namespace command
