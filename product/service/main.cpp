// The service mngsrvraidd: watches this server's RAID drives, and tells what changes.

#include "Configuration.h"
#include "Keeper.h"
#include "Loop.h"
#include "Service.h"
#include "basics/Descriptor.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/HostName.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "sandbox/Sandbox.h"
#include "scenario/ScenarioFolder.h"
#include "telling/TestAlert.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#include <CLI/CLI.hpp>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace service {
namespace {

namespace fs = std::filesystem;
using basics::Failure;

constexpr const char* kUsualFolder = "/etc/mngsrvraid";
constexpr const char* kUsualConfiguration = "/etc/mngsrvraid/mngsrvraidd.toml";
constexpr const char* kUsualAccounts = "/etc/mngsrvraid/accounts";

enum class ExitStatus : int { Success = 0, Failed = 1, WrongUse = 2, Surroundings = 4 };

struct Options {
    std::string configuration;  ///< empty: the usual file, where there is one
    std::string scenario, installDir, history;
    std::string account, accounts = kUsualAccounts, folder = kUsualFolder;
    bool checks = false, testsAlert = false, isVersion = false;
};

void Say(const std::string& line) {
    (void)basics::WriteWhole(STDERR_FILENO, "mngsrvraidd: " + basics::OneLine(line) + "\n");
}

void OccupyStandardDescriptors() noexcept {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        }
    }
}

fs::path Simulation() {
    return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "vdksim";
}

std::string FileOf(const Options& options) {
    return options.configuration.empty() ? kUsualConfiguration : options.configuration;
}

/// The usual file may be missing: then the defaults hold.
Configuration ReadIt(const Options& options) {
    std::error_code error;
    const bool isThere = !options.configuration.empty() || fs::exists(kUsualConfiguration, error);
    Configuration configuration;
    try {
        configuration = ReadConfiguration(isThere ? basics::ReadFile(FileOf(options)) : "");
    } catch (const ConfigurationError& problems) {
        throw Failure(Failure::Kind::Use, FileOf(options) + ": " + problems.what());
    }
    if (configuration.host.empty()) {
        configuration.host = options.scenario.empty() ? basics::HostName() : "";
    }
    if (!options.history.empty()) {
        configuration.history = options.history;
    }
    return configuration;
}

ExitStatus Check(const Options& options) {
    std::string text;
    ExitStatus status = ExitStatus::Success;
    std::error_code ignored;
    if (options.configuration.empty() && !fs::exists(kUsualConfiguration, ignored)) {
        basics::DocumentTarget::StandardOutput().Store(std::string(kUsualConfiguration) +
                                                       " is not there: every key has its default\n");
        return status;
    }
    try {
        const Configuration configuration = ReadConfiguration(basics::ReadFile(FileOf(options)));
        for (const telling::Channel& channel : configuration.channels) {
            for (const telling::Fault& fault : MissingFor(channel)) {
                text += FileOf(options) + ": channel " + channel.name + ": " + fault.key + ": " +
                        fault.words + '\n';
                status = ExitStatus::Failed;
            }
        }
    } catch (const ConfigurationError& error) {
        for (const std::string& problem : error.Problems()) {
            text += FileOf(options) + ": " + problem + '\n';
        }
        status = ExitStatus::Failed;
    }
    basics::DocumentTarget::StandardOutput().Store(text.empty() ? FileOf(options) + ": all well\n" : text);
    return status;
}

ExitStatus Test(const Options& options) {
    const Configuration configuration = ReadIt(options);
    const watch::Event event = telling::MakeTestEvent(configuration.host, std::chrono::system_clock::now());
    ExitStatus status = ExitStatus::Success;
    const auto tell = [&status](const telling::TestAnswer& answer) {
        const std::string words = answer.words.empty() ? "" : ": " + basics::OneLine(answer.words);
        basics::DocumentTarget::StandardOutput().Store(
            answer.channel + (answer.isDelivered ? ": delivered" : ": failed") + words + " (" +
            std::to_string(answer.taken.count()) + " ms)\n");
        status = answer.isDelivered ? status : ExitStatus::Failed;
    };
    (void)telling::TestAlert(configuration.channels, event, configuration.host, tell);
    return status;
}

/// A folder that goes with the process, for what a made-up server's history is.
class TemporaryFolder final {
  public:
    TemporaryFolder() : m_Path((fs::temp_directory_path() / "mngsrvraidd.XXXXXX").string()) {
        if (::mkdtemp(m_Path.data()) == nullptr) {
            basics::FailSurroundings("no folder for the history can be made: " + basics::ErrorText(errno));
        }
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(m_Path, ignored);
    }
    [[nodiscard]] const std::string& Path() const { return m_Path; }

  private:
    std::string m_Path;
};

ExitStatus Watch(Options options) {
    if (!options.installDir.empty() &&
        ::setenv("ZORBALT_INSTALL_DIR", fs::absolute(options.installDir).lexically_normal().c_str(), 1) !=
            0) {
        basics::FailSurroundings("--install-dir cannot be used: " + basics::ErrorText(errno));
    }
    std::optional<TemporaryFolder> folder;
    if (!options.scenario.empty() && options.history.empty()) {
        folder.emplace();  // What is made up must not get into the history of this server.
        options.history = folder->Path() + "/history.db";
    }
    const auto now = [] {
        return Moment{std::chrono::system_clock::now(), std::chrono::steady_clock::now()};
    };
    Service service(ReadIt(options), Say, now());
    if (const std::optional<std::string> other = service.OtherWriter()) {
        basics::FailSurroundings("the history " + service.TheConfiguration().history + " is written by " +
                                 *other + " already; name another one by --history");
    }
    if (!options.scenario.empty()) {
        const fs::path scenario = scenario::FindScenario(options.scenario, Simulation() / "scenarios");
        sandbox::EnterSandbox(Simulation() / "vdkcli", scenario);
    }
    Loop({.scenario = options.scenario,
          .readConfiguration = [&options] { return ReadIt(options); },
          .log = Say},
         service)
        .Run();
    return ExitStatus::Success;
}

/// Accounts and keys are the business of the program that lets clients in.
[[noreturn]] void BecomeSetUp(std::vector<std::string> words) {
    words.insert(words.begin(), ProgramBeside("mngsrvraid-set-up"));
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    (void)::execv(pointers.front(), pointers.data());
    basics::FailSurroundings(words.front() + " cannot be started: " + basics::ErrorText(errno));
}

ExitStatus Run(int count, const char* const* words) {
    Options options;
    CLI::App app(
        "Watches the RAID drives of this server, remembers what it tells, and tells people and programs "
        "what changes.",
        "mngsrvraidd");
    app.set_help_flag("-h,--help", "Print this text");
    app.add_flag("--version", options.isVersion, "Print the version");
    app.add_option("--config", options.configuration,
                   std::string("The configuration; by default ") + kUsualConfiguration)
        ->type_name("FILE");
    app.add_flag("--check-config", options.checks, "Say what is wrong with the configuration, and end");
    app.add_flag("--test-alert", options.testsAlert,
                 "Send a test event through all channels, say what each said, and end");
    app.add_option(
           "--scenario", options.scenario,
           "Watch this scenario instead of this server; what is remembered goes with it, unless --history "
           "names a file")
        ->type_name("DIR");
    app.add_option("--install-dir", options.installDir, "Install root to use")->type_name("DIR");
    app.add_option("--history", options.history,
                   "The file of what is remembered, whatever the configuration says")
        ->type_name("FILE");
    CLI::App* const passwd = app.add_subcommand("passwd", "Set the password of an account for the network");
    passwd->add_option("NAME", options.account, "The account")->required();
    passwd->add_option("--accounts", options.accounts, std::string("The file; by default ") + kUsualAccounts)
        ->type_name("FILE");
    CLI::App* const setUpTls =
        app.add_subcommand("setup-tls", "Make a key and a certificate for trying out encryption");
    setUpTls->add_option("FOLDER", options.folder, std::string("Where to; by default ") + kUsualFolder);
    try {
        app.parse(count, words);
    } catch (const CLI::CallForHelp&) {
        basics::DocumentTarget::StandardOutput().Store(app.help());
        return ExitStatus::Success;
    } catch (const CLI::ParseError& error) {
        throw Failure(Failure::Kind::Use, std::string(error.what()) + "; see mngsrvraidd --help");
    }
    if (options.isVersion) {
        basics::DocumentTarget::StandardOutput().Store("mngsrvraidd " SERVICE_VERSION "\n");
        return ExitStatus::Success;
    }
    if (passwd->parsed()) {
        BecomeSetUp({"passwd", options.accounts, options.account});
    }
    if (setUpTls->parsed()) {
        BecomeSetUp({"setup-tls", options.folder});
    }
    return options.checks ? Check(options) : options.testsAlert ? Test(options) : Watch(std::move(options));
}

int RunAndReport(int count, const char* const* words) {
    try {
        return static_cast<int>(Run(count, words));
    } catch (const Failure& error) {
        Say(error.what());
        return static_cast<int>(error.WhatKind() == Failure::Kind::Use ? ExitStatus::WrongUse
                                                                       : ExitStatus::Surroundings);
    } catch (const sandbox::SandboxError& error) {
        Say(std::string("the scenario cannot take the tool's place: ") + error.what());
    } catch (const std::exception& error) {
        Say(std::string("the service cannot go on: ") + error.what());
    }
    return static_cast<int>(ExitStatus::Surroundings);
}

}  // namespace
}  // namespace service

int main(int count, char** words) {
    service::OccupyStandardDescriptors();
    return service::RunAndReport(count, words);
}
