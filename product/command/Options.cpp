#include "Options.h"

#include "Recall.h"
#include "basics/Failure.h"
#include "basics/HostName.h"
#include "basics/NearestName.h"
#include "basics/Words.h"

#include "qel/portable/CTraceOutput.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>

namespace command {
namespace {

constexpr const char* kName = "mngsrvraid";
constexpr const char* kDescription =
    "Says whether the drives of this server are well, and what else there is to know of them.";
constexpr const char* kFooter =
    R"(CTRL, ENCL and PD are the numbers of the controller, of the enclosure, and of the
drive's slot in it; show prints them as controller and SLOT, and 252:3 will do for
both here. What a subcommand prints goes to standard output, or to the file named by
--output, only when it is whole. Options may stand before or behind the subcommand;
what stands behind "--" is no option. Colours are for terminals only, and never with
NO_COLOR.

Exit status:
  0  success
  1  the method failed; standard error has its return value and the reasons.
     Of diff: there are differences; of expect: the server is not well;
     of test-alert: a channel has failed
  2  the command line is wrong
  3  the call failed with a WBEM status, or gave no result
  4  the surroundings failed: the module, the scenario, the private view of the
     file system, a file to read, or the output. Of diff: the method, too
  Of health: 0 well, 1 warning, 2 critical, 3 unknown, as monitoring plug-ins have it

Examples:
  mngsrvraid show                              is everything well, and what is there
  mngsrvraid health                            one line for a monitoring system
  mngsrvraid --scenario small expect --save well.json      what ought to be there
  mngsrvraid health --expect well.json --max-temperature 50
  mngsrvraid smart 0 252:3                     drive in slot 3 of enclosure 252, controller 0
  mngsrvraid --output raid.html show --smart --format html
  mngsrvraid get-info                          the RAID document of this server
  mngsrvraid --output raid.xml get-info        the same, into a file
  mngsrvraid show --document raid.xml          a saved document instead of this server
  mngsrvraid diff old.xml raid.xml             what has changed
  mngsrvraid capture ./my-server --redact      record this server for support
  mngsrvraid --scenario ./my-server show       show what was recorded
  mngsrvraid redact ./my-server                for a capture that was made without --redact
  mngsrvraid diff ./my-server raid.xml         what has changed since then
  mngsrvraid history 0 252:3 --since 90d       how the drive in that slot got on
  mngsrvraid events --follow                   what happens, as it happens
  mngsrvraid test-alert                        does everybody hear of failures
  mngsrvraid --scenario small get-pd-info 0 252 0
  mngsrvraid --scenario small --trace-file trace.txt get-info)";

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

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

[[noreturn]] void Reject(const std::string& what) {
    throw basics::Failure(basics::Failure::Kind::Use, what + "; see mngsrvraid --help");
}

void RejectEmpty(const char* option, const std::optional<std::string>& value) {
    if (value && value->empty()) {
        Reject(std::string(option) + " needs a path that is not empty");
    }
}

// The library speaks of "1 required DIR missing" or "At Most 1 required but received 2", behind the option's
// name.
std::string InOwnWords(const CLI::ArgumentMismatch& mismatch) {
    const std::string words = mismatch.what();
    const std::string option = words.substr(0, words.find(':'));
    return option +
           (words.find("At Most") == std::string::npos ? " needs a value" : " is given more than once");
}

/// The parser with what it fills. Its options refer to its members, so it stays where it is.
class Parser final {
  public:
    Parser() {
        m_App.set_help_flag("-h,--help", "Print this text");
        m_App.add_flag("--version", m_Version, "Print the versions of the command and of the module");
        m_App.fallthrough();
        m_App.allow_extras();  // Named one by one by RejectRest, in the order in which they were typed.
        m_App.require_subcommand(0, 1);
        m_App.footer(kFooter);
        AddOption(
            "--scenario", m_Options.scenario, "DIR",
            "Run against this scenario instead of this server: a folder,\nor the name of a shipped one");
        AddOption("--install-dir", m_Options.installDir, "DIR",
                  "Install root to use; sets ZORBALT_INSTALL_DIR");
        AddOption("--trace", m_Trace, "LEVELS",
                  "Trace to standard error: any of 1 (results), 2 (failures),\n4 (operations), 8 "
                  "(exceptions) separated by commas, or all");
        AddOption("--trace-file", m_Options.traceFile, "FILE",
                  "Trace to this file; all levels without --trace");
        AddOption("--timeout", m_Timeout, "SECONDS",
                  "End the tool when it takes longer, with all that it started;\n0: never. By default 50 for "
                  "health, 300 for the others");
        AddOption("--app-key", m_Options.appKey, "KEY", "Application key of the caller");
        AddOption(
            "--output", m_Options.output, "FILE",
            "Store what is printed in this file, which keeps its mode and owner;\n- is standard output");
        AddOption("--host", m_Host, "NAME",
                  "What the server is called in what is printed; by default as\nthis machine, but for "
                  "scenarios and saved documents");
        AddOption("--format", m_Format, "FORMAT",
                  "Of show, smart, get-info and get-pd-info: xml, tree, table, json,\nhtml or prometheus; "
                  "of diff and events: table or json;\nof history: table, json or html");
        m_App.add_flag("--compact", m_Options.isCompact,
                       "Of the format json: without the items of the documents");
        AddShow();
        AddDrive("smart", "CTRL ENCL PD: one drive, its SMART values and its attribute table",
                 Options::Action::Smart);
        AddHealth();
        AddExpect();
        AddSubcommand("get-info", "The RAID document: controllers, groups, drives", Options::Action::GetInfo);
        AddDrive("get-pd-info", "CTRL ENCL PD: the document of one drive, with its SMART data",
                 Options::Action::GetPDInfo);
        AddCapture();
        AddRedact();
        AddDiff();
        AddHistory();
        AddEvents();
        AddTestAlert();
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    [[nodiscard]] Options Parse(int count, const char* const* words) {
        try {
            m_App.parse(count, words);
        } catch (const CLI::CallForHelp&) {
            m_Options.action = Options::Action::Help;
            // Of one that has parsed nothing: of this one it would be the help of the subcommand alone.
            m_Options.helpText = Parser().m_App.help();
            return m_Options;
        } catch (const CLI::ArgumentMismatch& error) {
            Reject(InOwnWords(error));
        } catch (const CLI::ParseError& error) {
            Reject(error.what());
        }
        RejectRest();
        CheckValues();
        ChooseAction();
        return m_Options;
    }

  private:
    void AddOption(const char* name, std::optional<std::string>& place, const char* type, const char* help,
                   CLI::App* owner = nullptr) {
        (owner == nullptr ? m_App : *owner)
            .add_option_function<std::string>(
                name, [&place](const std::string& text) { place = text; }, help)
            ->type_name(type);
    }

    CLI::App* AddSubcommand(const char* name, const char* help, Options::Action action) {
        CLI::App* const subcommand = m_App.add_subcommand(name, help);
        subcommand->set_help_flag();
        subcommand->fallthrough();
        m_Subcommands.push_back({subcommand, action});
        return subcommand;
    }

    void AddShow() {
        CLI::App* const show = AddSubcommand("show",
                                             "What needs attention, then everything, in tables\n"
                                             "  --document FILE  of this saved document, not of the server\n"
                                             "  --smart          with the SMART data of all drives\n"
                                             "  --jobs N         asking for N of them at a time, up to 64\n"
                                             "  --history FILE   of the format html: with lines of 30 days\n"
                                             "  and with what health is told to judge by",
                                             Options::Action::Show);
        AddOption("--document", m_Options.document, "FILE", "", show);
        AddJudging(show);
        show->add_flag("--smart", m_Options.hasSmart);
        AddOption("--jobs", m_Jobs, "N", "", show);
        AddOption("--history", m_Options.history, "FILE", "", show);
    }

    void AddHealth() {
        CLI::App* const health =
            AddSubcommand("health",
                          "One line and an exit status for monitoring systems\n"
                          "  --document FILE  of this saved document, not of the server\n"
                          "  --verbose        with a line for each finding\n"
                          "  --expect FILE    with what is not as expect has saved it\n"
                          "  --max-temperature C  --max-media-errors N\n"
                          "  --max-media-error-growth N  since it was saved\n"
                          "  --min-spares N   fewest good spares of a controller",
                          Options::Action::Health);
        AddOption("--document", m_Options.document, "FILE", "", health);
        health->add_flag("--verbose", m_Options.isVerbose);
        AddJudging(health);
    }

    void AddJudging(CLI::App* subcommand) {
        AddOption("--expect", m_Options.expect, "FILE", "", subcommand);
        for (auto& [name, text] : m_Limits) {
            AddOption(name, text, "NUMBER", "", subcommand);
        }
    }

    void AddExpect() {
        CLI::App* const expect =
            AddSubcommand("expect",
                          "Save what this server has, as what it ought to have\n"
                          "  --save FILE      into this file, for health and show --expect\n"
                          "  --document FILE  of this saved document, not of the server\n"
                          "  --accept-until DAY --reason TEXT  what is not well now is\n"
                          "                   known, and does not count up to that day",
                          Options::Action::Expect);
        AddOption("--save", m_Save, "FILE", "", expect);
        AddOption("--document", m_Options.document, "FILE", "", expect);
        AddOption("--accept-until", m_Options.acceptUntil, "DAY", "", expect);
        AddOption("--reason", m_Options.acceptReason, "TEXT", "", expect);
    }

    void AddDrive(const char* name, const char* help, Options::Action action) {
        CLI::App* const subcommand = AddSubcommand(name, help, action);
        for (const auto& [place, parameter] :
             {std::pair{&m_Drive[0], "CTRL"}, {&m_Drive[1], "ENCL"}, {&m_Drive[2], "PD"}}) {
            subcommand->add_option(parameter, *place);
        }
    }

    void AddCapture() {
        CLI::App* const capture =
            AddSubcommand("capture",
                          "DIR: record what the tool answers, as a scenario in this new folder\n"
                          "  --redact         without serial numbers, addresses and the like\n"
                          "  --redact-word WORD  and without this word; more than once for more",
                          Options::Action::Capture);
        capture->add_option("DIR", m_Options.folder);
        capture->add_flag("--redact", m_Options.isRedacted);
        AddRedactWord(capture);
    }

    void AddRedact() {
        CLI::App* const redact = AddSubcommand("redact",
                                               "DIR: the same for a capture that was made without --redact\n"
                                               "  --redact-word WORD  as for capture",
                                               Options::Action::Redact);
        redact->add_option("DIR", m_Options.folder);
        AddRedactWord(redact);
    }

    void AddRedactWord(CLI::App* subcommand) {
        subcommand->add_option("--redact-word", m_Options.redactWords)->allow_extra_args(false);
    }

    void AddDiff() {
        CLI::App* const diff =
            AddSubcommand("diff",
                          "OLD NEW: what changed between two documents,\n"
                          "captures or scenarios\n"
                          "  --all            with what always moves, such as temperatures",
                          Options::Action::Diff);
        diff->add_flag("--all", m_Options.hasAll);
        diff->add_option("OLD", m_Options.before);
        diff->add_option("NEW", m_Options.after);
    }

    void AddHistory() {
        CLI::App* const history =
            AddSubcommand("history",
                          "[PART]: the parts that mngsrvraidd has seen and their states, or what\n"
                          "happened to one: a serial number, 0 252:3, RG1, LD4, controller 0\n"
                          "  --since TIME     30d, 12h, 90m, 2031-04-05, 2031-04-05T06:07:08Z;\n"
                          "                   30d by default\n"
                          "  --history FILE   of this file instead of\n"
                          "                   /var/lib/mngsrvraid/history.db",
                          Options::Action::History);
        history->add_option("PART", m_Part);
        AddRecalling(history);
    }

    void AddEvents() {
        CLI::App* const events = AddSubcommand("events",
                                               "What has happened, in the order in which it did\n"
                                               "  --since TIME  --history FILE  as for history\n"
                                               "  --follow         and what happens from now on, as it comes",
                                               Options::Action::Events);
        AddRecalling(events);
        events->add_flag("--follow", m_Options.isFollowing);
    }

    void AddTestAlert() {
        CLI::App* const test = AddSubcommand("test-alert",
                                             "Send a test event through all channels of\n"
                                             "mngsrvraidd, and print what each said\n"
                                             "  --config FILE    configuration instead of\n"
                                             "                /etc/mngsrvraid/mngsrvraidd.toml",
                                             Options::Action::TestAlert);
        AddOption("--config", m_Options.config, "FILE", "", test);
    }

    void AddRecalling(CLI::App* subcommand) {
        AddOption("--since", m_Since, "TIME", "", subcommand);
        AddOption("--history", m_Options.history, "FILE", "", subcommand);
    }

    /// What the parser has left over; "--" only ends the options.
    void RejectRest() const {
        const std::vector<std::string> rest = m_App.remaining(true);
        const auto unknown =
            std::find_if(rest.begin(), rest.end(), [](const std::string& word) { return word != "--"; });
        if (unknown == rest.end()) {
            return;
        }
        const bool isOption = unknown->starts_with('-');
        const std::string nearest = basics::NearestName(isOption ? OptionNames() : MissingSubcommands(),
                                                        unknown->substr(0, unknown->find('=')));
        Reject((isOption ? "unknown option " : "unexpected argument ") + Quoted(*unknown) +
               (nearest.empty() ? "" : " (did you mean " + nearest + "?)"));
    }

    /// Those that go with what was typed.
    [[nodiscard]] std::vector<std::string> OptionNames() const {
        std::vector<const CLI::App*> parsers = {&m_App};
        for (const CLI::App* const subcommand : m_App.get_subcommands()) {
            parsers.push_back(subcommand);
        }
        std::vector<std::string> names;
        for (const CLI::App* const parser : parsers) {
            for (const CLI::Option* const option : parser->get_options()) {
                for (const std::string& name : option->get_lnames()) {
                    names.push_back("--" + name);
                }
            }
        }
        return names;
    }

    /// What an argument could have been meant for: any of them, where none was typed.
    [[nodiscard]] std::vector<std::string> MissingSubcommands() const {
        std::vector<std::string> names;
        if (m_App.get_subcommands().empty()) {
            for (const Subcommand& each : m_Subcommands) {
                names.push_back(each.app->get_name());
            }
        }
        return names;
    }

    void CheckValues() {
        RejectEmpty("--scenario", m_Options.scenario);
        RejectEmpty("--install-dir", m_Options.installDir);
        RejectEmpty("--trace-file", m_Options.traceFile);
        RejectEmpty("--output", m_Options.output);
        RejectEmpty("--document", m_Options.document);
        RejectEmpty("--expect", m_Options.expect);
        RejectEmpty("--save", m_Save);
        RejectEmpty("--history", m_Options.history);
        RejectEmpty("--config", m_Options.config);
        ChooseLimits();
        if (m_Options.output == "-") {
            m_Options.output.reset();
        }
        m_Options.traceLevels = m_Options.traceFile ? CTraceOutput::ALL_LEVELS : 0;
        if (m_Trace) {
            const auto levels = ParseTraceLevels(*m_Trace);
            if (!levels) {
                Reject("--trace takes any of 1,2,4,8 separated by commas, or all, not " + Quoted(*m_Trace));
            }
            m_Options.traceLevels = *levels;
        }
    }

    void ChooseAction() {
        if (m_Version) {
            m_Options.action = Options::Action::Version;
            return;
        }
        const auto chosen =
            std::find_if(m_Subcommands.begin(), m_Subcommands.end(),
                         [this](const Subcommand& each) { return m_App.got_subcommand(each.app); });
        if (chosen == m_Subcommands.end()) {
            Reject("a subcommand is missing: " + SubcommandNames());
        }
        m_Options.action = chosen->action;
        m_Options.subcommand = chosen->app->get_name();
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

    [[nodiscard]] std::string SubcommandNames() const {
        std::string names;
        for (const Subcommand& each : m_Subcommands) {
            names += (names.empty()                    ? ""
                      : &each == &m_Subcommands.back() ? " or "
                                                       : ", ") +
                     each.app->get_name();
        }
        return names;
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
        const std::string since = m_Since.value_or(kUsualSince);
        m_Options.since = SinceFrom(since, std::chrono::system_clock::now());
        if (!m_Options.since) {
            Reject("--since takes a time such as 30d, 12h, 90m, 2031-04-05 or 2031-04-05T06:07:08Z, not " +
                   Quoted(since));
        }
        m_Options.history = m_Options.history.value_or(kHistory);
        m_Options.part = basics::Joined(m_Part, " ");
    }

    void ChooseRecallingFormat(std::string_view formats) {
        const std::string format = m_Format.value_or("table");
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
        const std::string format = m_Format.value_or("table");
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
                if (m_Format) {
                    Reject("--format does not go with " + m_Options.subcommand);
                }
                RejectCompact();
                return;
        }
        if (!m_Format) {
            RejectCompact();
            return;
        }
        const auto* const found =
            std::find_if(std::begin(kFormats), std::end(kFormats),
                         [this](const FormatName& each) { return each.name == *m_Format; });
        if (found == std::end(kFormats)) {
            Reject("--format takes xml, tree, table, json, html or prometheus, not " + Quoted(*m_Format));
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
        if (m_Timeout) {
            const std::optional<unsigned> given = basics::NumberFrom<unsigned>(*m_Timeout);
            if (!given || *given > kMostSeconds) {
                Reject("--timeout takes whole seconds up to 1000000, or 0 for none, not " +
                       Quoted(*m_Timeout));
            }
            seconds = *given;
        }
        m_Options.timeLimit = std::chrono::seconds(seconds);
    }

    void ChooseJobs() {
        constexpr std::size_t kMostJobs = 64;
        if (!m_Jobs) {
            return;
        }
        if (!m_Options.hasSmart) {
            Reject("--jobs goes with --smart alone");
        }
        m_Options.jobs = basics::NumberFrom<std::size_t>(*m_Jobs).value_or(0);
        if (m_Options.jobs < 1 || m_Options.jobs > kMostJobs) {
            Reject("--jobs takes a number from 1 to " + std::to_string(kMostJobs) + ", not " +
                   Quoted(*m_Jobs));
        }
    }

    void ChooseLimits() {
        const auto numberOf = [this](std::size_t limit) -> std::optional<std::uint32_t> {
            const auto& [name, text] = m_Limits.at(limit);
            const auto number = basics::NumberFrom<std::uint32_t>(text.value_or("0"));
            if (!number) {
                Reject(std::string(name) + " takes a whole number, not " + Quoted(*text));
            }
            return text ? number : std::nullopt;
        };
        m_Options.limits = {numberOf(0), numberOf(1), numberOf(2), numberOf(3)};
    }

    void ChooseSaving() {
        if (!m_Save || m_Options.output) {
            Reject(m_Save ? "expect takes --save FILE, not --output"
                          : "expect needs a file to save to: --save FILE");
        }
        if (m_Save != "-") {
            m_Options.output = m_Save;
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
        m_Options.host = m_Host.value_or(isThisServer ? basics::HostName() : "");
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
        if (!m_Drive.back() && m_Drive[1]) {  // as show prints it: 252:3
            if (const std::size_t colon = m_Drive[1]->find(':'); colon != std::string::npos) {
                m_Drive[2] = m_Drive[1]->substr(colon + 1);
                m_Drive[1]->resize(colon);
            }
        }
        if (!m_Drive.back()) {
            Reject(m_Options.subcommand + " needs a drive: CTRL ENCL PD, or CTRL ENCL:PD");
        }
        m_Options.parameters = {{"CTRL", *m_Drive[0]}, {"ENCL", *m_Drive[1]}, {"PD", *m_Drive[2]}};
    }

    struct Subcommand {
        CLI::App* app;
        Options::Action action;
    };

    Options m_Options;
    std::optional<std::string> m_Trace;
    std::optional<std::string> m_Format;
    std::optional<std::string> m_Timeout;
    std::optional<std::string> m_Jobs;
    std::optional<std::string> m_Host;
    std::optional<std::string> m_Save;
    std::optional<std::string> m_Since;
    std::vector<std::string> m_Part;
    /// In the order of inventory::Limits.
    std::array<std::pair<const char*, std::optional<std::string>>, 4> m_Limits = {
        {{"--max-temperature", {}},
         {"--max-media-errors", {}},
         {"--max-media-error-growth", {}},
         {"--min-spares", {}}}};
    std::array<std::optional<std::string>, 3> m_Drive;
    bool m_Version = false;
    CLI::App m_App{kDescription, kName};
    std::vector<Subcommand> m_Subcommands;
};

}  // namespace

Options ParseOptions(int count, const char* const* words) {
    return Parser().Parse(count, words);
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
