#include "Trial.h"

#include "Loader.h"
#include "Memory.h"
#include "Rules.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace faults {
namespace {

constexpr unsigned kSecondsPerTrial = 60;

/// What the process of a trial tells the one that started it, in memory that they share.
struct Report {
    bool isFinished = false;
    Outcome outcome = Outcome::Died;
    std::size_t blocksLeft = 0;
    std::array<char, 4096> findings{};  // one a line
    std::array<char, 256 * 1024> document{};
};

Report& SharedReport() {
    static void* const shared =
        ::mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category(), "mmap");
    }
    return *static_cast<Report*>(shared);
}

std::vector<std::string> NamesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The checks of one trial, inside its process.
class Checker final {
  public:
    explicit Checker(Report& report) : m_Report(report), m_Descriptors(NamesIn("/proc/self/fd")) {}

    void Find(const std::string& what) {
        const std::size_t used = std::strlen(m_Report.findings.data());
        if (used + what.size() + 2 < m_Report.findings.size()) {
            std::memcpy(m_Report.findings.data() + used, what.c_str(), what.size());
            m_Report.findings[used + what.size()] = '\n';
        }
    }

    /// No result files may be left but those whose deletion failed.
    void LookForFiles(const std::string& when, std::size_t expected) {
        const std::vector<std::string> left = NamesIn(Root::ResultFolder());
        if (left.size() != expected) {
            Find(when + ": " + std::to_string(left.size()) + " result files are left, not " +
                 std::to_string(expected));
        }
        for (const std::string& file : left) {
            fs::remove_all(Root::ResultFolder() / file);
        }
    }

    void LookForRemains(const std::string& when) {
        if (NamesIn("/proc/self/fd") != m_Descriptors) {
            Find(when + ": a descriptor is left open");
        }
        if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) {
            Find(when + ": a child is left");
        }
        const std::string library = LibraryFaults();
        if (!library.empty()) {
            Find(when + ": " + library);
        }
        ForgetLoaderError();
    }

  private:
    Report& m_Report;
    std::vector<std::string> m_Descriptors;
};

std::string Describe(const Observed& seen) {
    return std::string(NameOf(seen.outcome)) + (seen.odd.empty() ? "" : " (" + seen.odd + ")");
}

bool IsFitting(const Trial& trial, Outcome outcome) {
    if (trial.expected || trial.order.at == 0) {
        return outcome == trial.expected.value_or(Outcome::Success);
    }
    const auto fitting = FittingOutcomes(trial.order, FirstStruckAt());
    return std::find(fitting.begin(), fitting.end(), outcome) != fitting.end();
}

void CheckTrial(Checker& checker, const Trial& trial, const Observed& seen, const std::string& usual) {
    if (trial.order.at != 0 && TimesStruck() == 0) {
        checker.Find("the fault never struck");
    } else if (!IsFitting(trial, seen.outcome)) {
        checker.Find("not fitting: " + Describe(seen));
    }
    if (seen.outcome == Outcome::Success && !usual.empty() && seen.document != usual) {
        checker.Find("success with another document than usual");
    }
    // Lines that come behind the storing of the document can fail too; then it is there, and whole.
    const bool isWhole = trial.order.kind == Kind::Trace && seen.document == usual;
    if (seen.outcome != Outcome::Success && !seen.document.empty() && !isWhole) {
        checker.Find("a failure with a document");
    }
}

// What a check cannot do ends the process with its words, and is a finding.
void Inside(Scene& scene, const Trial& trial, const std::string& usual, Report& report) noexcept {
    Checker checker(report);
    trial.before();
    scene.SetMischief(trial.mischief);
    const Observed seen = scene.Run();
    EndOrder();
    if (trial.order.kind == Kind::LookUp) {
        CloseLeftLibrary();
    }
    CheckTrial(checker, trial, seen, usual);
    checker.LookForFiles("at first", trial.order.kind == Kind::Unlink ? TimesStruck() : std::size_t{0});
    trial.after();
    checker.LookForRemains("at first");

    scene.SetMischief({});
    const Observed again = scene.Run();
    if (again.outcome != Outcome::Success || (!usual.empty() && again.document != usual)) {
        checker.Find("the next run does not succeed as usual: " + Describe(again));
    }
    checker.LookForFiles("in the next run", 0);
    checker.LookForRemains("in the next run");

    report.outcome = seen.outcome;
    seen.document.copy(report.document.data(), report.document.size() - 1);
    report.blocksLeft = BlocksLeft();
    report.isFinished = true;
}

/// Forks, runs `Inside`, waits, and reaps whatever it left running.
int RunInProcess(Scene& scene, const Trial& trial, const std::string& usual) {
    Report& report = *new (&SharedReport()) Report;
    StartOrder(trial.order);
    const pid_t child = ::fork();
    if (child == -1) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        ::alarm(kSecondsPerTrial);
        Inside(scene, trial, usual, report);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    while (::waitpid(-1, nullptr, 0) != -1) {
    }
    for (const std::string& file : NamesIn(Root::ResultFolder())) {
        fs::remove_all(Root::ResultFolder() / file);
    }
    return status;
}

std::vector<std::string> Lines(const char* text) {
    std::vector<std::string> lines;
    for (const char* end = nullptr; (end = std::strchr(text, '\n')) != nullptr; text = end + 1) {
        lines.emplace_back(text, end);
    }
    return lines;
}

}  // namespace

TrialResult RunTrial(Scene& scene, const Trial& trial, const Undisturbed& usual) {
    const int status = RunInProcess(scene, trial, usual.document);
    const Report& report = SharedReport();
    TrialResult result{report.outcome, Lines(report.findings.data())};
    if (report.isFinished) {
        if (report.blocksLeft != usual.blocksLeft) {
            result.findings.push_back(std::to_string(report.blocksLeft) + " blocks of memory are left, not " +
                                      std::to_string(usual.blocksLeft));
        }
    } else if (TimesStruck() == 0 || !IsFitting(trial, Outcome::Died)) {
        result.findings.push_back(WIFSIGNALED(status) ? "died by signal " + std::to_string(WTERMSIG(status))
                                                      : "ended without a report");
    }
    return result;
}

Undisturbed RunUndisturbed(Scene& scene) {
    scene.Prepare();
    (void)RunInProcess(scene, {}, "");
    const Report& report = SharedReport();
    Undisturbed usual;
    usual.document = report.document.data();
    usual.blocksLeft = report.blocksLeft;
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        usual.calls.at(kind) = CallsOf(static_cast<Kind>(kind));
    }
    if (!report.isFinished || report.findings.front() != '\0') {
        throw std::runtime_error(std::string("undisturbed: ") + report.findings.data());
    }
    if (!scene.IsFirstUse() && usual.blocksLeft != 0) {
        throw std::runtime_error("undisturbed: " + std::to_string(usual.blocksLeft) +
                                 " blocks of memory are left");
    }
    return usual;
}

}  // namespace faults
