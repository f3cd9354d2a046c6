#include "CommandLine.h"

#include "basics/Failure.h"
#include "basics/NearestName.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

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

// The library speaks of "1 required DIR missing" or "At Most 1 required but received 2", behind the option's
// name.
std::string InOwnWords(const CLI::ArgumentMismatch& mismatch) {
    const std::string words = mismatch.what();
    const std::string option = words.substr(0, words.find(':'));
    return option +
           (words.find("At Most") == std::string::npos ? " needs a value" : " is given more than once");
}

struct Subcommand {
    CLI::App* app;
    Options::Action action;
};

/// The parser with what it fills. Its options refer to its members, so it stays where it is.
class Parser final {
  public:
    Parser() {
        m_App.set_help_flag("-h,--help", "Print this text");
        m_App.add_flag("--version", m_Typed.asksForVersion,
                       "Print the versions of the command and of the module");
        m_App.fallthrough();
        m_App.allow_extras();  // Named one by one by RejectRest, in the order in which they were typed.
        m_App.require_subcommand(0, 1);
        m_App.footer(kFooter);
        AddOption(
            "--scenario", m_Options.scenario, "DIR",
            "Run against this scenario instead of this server: a folder,\nor the name of a shipped one");
        AddOption("--install-dir", m_Options.installDir, "DIR",
                  "Install root to use; sets ZORBALT_INSTALL_DIR");
        AddOption("--trace", m_Typed.trace, "LEVELS",
                  "Trace to standard error: any of 1 (results), 2 (failures),\n4 (operations), 8 "
                  "(exceptions) separated by commas, or all");
        AddOption("--trace-file", m_Options.traceFile, "FILE",
                  "Trace to this file; all levels without --trace");
        AddOption("--timeout", m_Typed.timeout, "SECONDS",
                  "End the tool when it takes longer, with all that it started;\n0: never. By default 50 for "
                  "health, 300 for the others");
        AddOption("--app-key", m_Options.appKey, "KEY", "Application key of the caller");
        AddOption(
            "--output", m_Options.output, "FILE",
            "Store what is printed in this file, which keeps its mode and owner;\n- is standard output");
        AddOption("--host", m_Typed.host, "NAME",
                  "What the server is called in what is printed; by default as\nthis machine, but for "
                  "scenarios and saved documents");
        AddOption("--format", m_Typed.format, "FORMAT",
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

    [[nodiscard]] Typed Parse(int count, const char* const* words) {
        try {
            m_App.parse(count, words);
        } catch (const CLI::CallForHelp&) {
            m_Typed.asksForHelp = true;
            // Of one that has parsed nothing: of this one it would be the help of the subcommand alone.
            m_Options.helpText = Parser().m_App.help();
            return m_Typed;
        } catch (const CLI::ArgumentMismatch& error) {
            Reject(InOwnWords(error));
        } catch (const CLI::ParseError& error) {
            Reject(error.what());
        }
        RejectRest();
        m_Typed.subcommands = SubcommandNames();
        for (const Subcommand& each : m_Subcommands) {
            if (m_App.got_subcommand(each.app)) {
                m_Typed.action = each.action;
                m_Options.subcommand = each.app->get_name();
            }
        }
        return m_Typed;
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
        AddOption("--jobs", m_Typed.jobs, "N", "", show);
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
        for (auto& [name, text] : m_Typed.limits) {
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
        AddOption("--save", m_Typed.save, "FILE", "", expect);
        AddOption("--document", m_Options.document, "FILE", "", expect);
        AddOption("--accept-until", m_Options.acceptUntil, "DAY", "", expect);
        AddOption("--reason", m_Options.acceptReason, "TEXT", "", expect);
    }

    void AddDrive(const char* name, const char* help, Options::Action action) {
        CLI::App* const subcommand = AddSubcommand(name, help, action);
        for (const auto& [place, parameter] :
             {std::pair{&m_Typed.drive[0], "CTRL"}, {&m_Typed.drive[1], "ENCL"}, {&m_Typed.drive[2], "PD"}}) {
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
        history->add_option("PART", m_Typed.part);
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
        AddOption("--since", m_Typed.since, "TIME", "", subcommand);
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

    Typed m_Typed;
    Options& m_Options = m_Typed.options;
    CLI::App m_App{kDescription, kName};
    std::vector<Subcommand> m_Subcommands;
};

}  // namespace

Typed ReadCommandLine(int count, const char* const* words) {
    return Parser().Parse(count, words);
}

void Reject(const std::string& what) {
    throw basics::Failure(basics::Failure::Kind::Use, what + "; see mngsrvraid --help");
}

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

}  // namespace command
