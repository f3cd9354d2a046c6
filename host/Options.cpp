#include "host/Options.h"

#include "host/ExitStatus.h"

#include "qel/portable/CTraceOutput.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace host {
namespace {

constexpr const char* kName = "mngsrvraid";
constexpr const char* kDescription =
    "Asks the RAID provider of this server, or of a scenario, for its XML document.";
constexpr const char* kFooter =
    R"(CTRL, ENCL and PD are the numbers of the controller, of the enclosure, and of the
drive in it. The document goes to standard output, or to the file named by
--output, only when it is whole. Options may stand before or behind the
subcommand; what stands behind "--" is no option.

Exit status:
  0  success
  1  the method failed; standard error has its return value and the reasons
  2  the command line is wrong
  3  the call failed with a WBEM status, or gave no result
  4  the surroundings failed: the module, the scenario, the private view of the
     file system, or the output

Examples:
  mngsrvraid get-info                     the RAID configuration of this server
  mngsrvraid --output raid.xml get-info   the same, into a file
  mngsrvraid get-pd-info 0 252 3          drive 3 in enclosure 252, controller 0
  mngsrvraid --scenario small get-info    a made-up server
  mngsrvraid --scenario ./my-server --trace-file trace.txt get-info)";

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

[[noreturn]] void Reject(const std::string& what) {
    throw HostError(ExitStatus::WrongUse, what + "; see mngsrvraid --help");
}

void RejectEmpty(const char* option, const std::optional<std::string>& value) {
    if (value && value->empty()) {
        Reject(std::string(option) + " needs a path that is not empty");
    }
}

void RejectRest(const std::vector<std::string>& rest) {
    const auto unknown =
        std::find_if(rest.begin(), rest.end(), [](const std::string& word) { return word != "--"; });
    if (unknown != rest.end()) {
        const bool isOption = unknown->starts_with('-');
        Reject((isOption ? "unknown option " : "unexpected argument ") + Quoted(*unknown));
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
        AddOption("--app-key", m_Options.appKey, "KEY", "Application key of the caller");
        AddOption("--output", m_Options.output, "FILE", "Store the document in this file");
        m_GetInfo = AddSubcommand("get-info", "The whole RAID configuration");
        m_GetPDInfo = AddSubcommand("get-pd-info", "CTRL ENCL PD: one drive, with its SMART data");
        for (const auto& [place, name] :
             {std::pair{&m_Drive[0], "CTRL"}, {&m_Drive[1], "ENCL"}, {&m_Drive[2], "PD"}}) {
            m_GetPDInfo->add_option(name, *place);
        }
    }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    [[nodiscard]] Options Parse(int count, const char* const* words) {
        // Before parsing: afterwards it would be the help of the subcommand alone.
        m_Options.helpText = m_App.help();
        try {
            m_App.parse(count, words);
        } catch (const CLI::CallForHelp&) {
            m_Options.action = Options::Action::Help;
            return m_Options;
        } catch (const CLI::ArgumentMismatch& error) {
            Reject(InOwnWords(error));
        } catch (const CLI::ParseError& error) {
            Reject(error.what());
        }
        RejectRest(m_App.remaining(true));
        CheckValues();
        ChooseAction();
        return m_Options;
    }

  private:
    void AddOption(const char* name, std::optional<std::string>& place, const char* type, const char* help) {
        m_App
            .add_option_function<std::string>(
                name, [&place](const std::string& text) { place = text; }, help)
            ->type_name(type);
    }

    CLI::App* AddSubcommand(const char* name, const char* help) {
        CLI::App* const subcommand = m_App.add_subcommand(name, help);
        subcommand->set_help_flag();
        subcommand->fallthrough();
        return subcommand;
    }

    void CheckValues() {
        RejectEmpty("--scenario", m_Options.scenario);
        RejectEmpty("--install-dir", m_Options.installDir);
        RejectEmpty("--trace-file", m_Options.traceFile);
        RejectEmpty("--output", m_Options.output);
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
        if (m_App.got_subcommand(m_GetInfo)) {
            m_Options.action = Options::Action::GetInfo;
            return;
        }
        if (!m_App.got_subcommand(m_GetPDInfo)) {
            Reject("a subcommand is missing: get-info or get-pd-info");
        }
        if (!m_Drive.back()) {
            Reject("get-pd-info needs three parameters: CTRL ENCL PD");
        }
        m_Options.action = Options::Action::GetPDInfo;
        m_Options.parameters = {
            {"CTRL", "CtrlNo", *m_Drive[0]}, {"ENCL", "EnclNo", *m_Drive[1]}, {"PD", "PDNo", *m_Drive[2]}};
    }

    Options m_Options;
    std::optional<std::string> m_Trace;
    std::array<std::optional<std::string>, 3> m_Drive;
    bool m_Version = false;
    CLI::App m_App{kDescription, kName};
    CLI::App* m_GetInfo = nullptr;
    CLI::App* m_GetPDInfo = nullptr;
};

}  // namespace

Options ParseOptions(int count, const char* const* words) {
    return Parser().Parse(count, words);
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
    std::int32_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() && !text.starts_with('-');
}

}  // namespace host
