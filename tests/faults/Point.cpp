#include "tests/faults/Point.h"

#include "tests/faults/Loader.h"
#include "tests/faults/Memory.h"
#include "tests/faults/Rules.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>

namespace fs = std::filesystem;

namespace faults {
namespace {

constexpr unsigned kSecondsPerPoint = 60;

/// What the process of a point tells the one that started it, in memory that they share.
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

/// The checks of one point, inside its process.
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

    /// What a run may leave behind: nothing but result files whose deletion failed.
    void LookForRemains(const std::string& when, std::size_t files) {
        if (NamesIn("/proc/self/fd") != m_Descriptors) {
            Find(when + ": a descriptor is left open");
        }
        if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) {
            Find(when + ": a child is left");
        }
        const std::vector<std::string> left = NamesIn(Root::ResultFolder());
        if (left.size() != files) {
            Find(when + ": " + std::to_string(left.size()) + " result files are left, not " +
                 std::to_string(files));
        }
        for (const std::string& file : left) {
            fs::remove_all(Root::ResultFolder() / file);
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

bool IsPrescribed(const Order& order, Outcome outcome) {
    const auto prescribed = PrescribedOutcomes(order, FirstStruckAt());
    return std::find(prescribed.begin(), prescribed.end(), outcome) != prescribed.end();
}

void CheckDisturbed(Checker& checker, const Order& order, const Observed& seen, const std::string& usual) {
    if (order.at != 0 && TimesStruck() == 0) {
        checker.Find("the fault never struck");
    } else if (order.at != 0 && !IsPrescribed(order, seen.outcome)) {
        checker.Find("not prescribed: " + Describe(seen));
    }
    if (seen.outcome == Outcome::Success && !usual.empty() && seen.document != usual) {
        checker.Find("success with another document than usual");
    }
    if (seen.outcome != Outcome::Success && !seen.document.empty()) {
        checker.Find("a failure with a document");
    }
}

void Inside(Scene& scene, const Order& order, const std::string& usual, Report& report) {
    Checker checker(report);
    const Observed disturbed = scene.Run();
    EndOrder();
    if (order.kind == Kind::LookUp) {
        CloseLeftLibrary();
    }
    CheckDisturbed(checker, order, disturbed, usual);
    checker.LookForRemains("after the disturbed run",
                           order.kind == Kind::Unlink ? TimesStruck() : std::size_t{0});

    scene.SetMischief({});
    const Observed again = scene.Run();
    if (again.outcome != Outcome::Success || (!usual.empty() && again.document != usual)) {
        checker.Find("the next run does not succeed as usual: " + Describe(again));
    }
    checker.LookForRemains("after the next run", 0);

    report.outcome = disturbed.outcome;
    disturbed.document.copy(report.document.data(), report.document.size() - 1);
    report.blocksLeft = BlocksLeft();
    report.isFinished = true;
}

/// Forks, runs `Inside`, waits, and reaps whatever the point left running.
int RunInProcess(Scene& scene, const Order& order, const std::string& usual) {
    Report& report = *new (&SharedReport()) Report;
    StartPoint(order);
    const pid_t point = ::fork();
    if (point == -1) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (point == 0) {
        ::alarm(kSecondsPerPoint);
        Inside(scene, order, usual, report);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(point, &status, 0);
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

PointResult RunPoint(Scene& scene, const Order& order, const Undisturbed& usual) {
    const int status = RunInProcess(scene, order, usual.document);
    const Report& report = SharedReport();
    PointResult result{report.outcome, Lines(report.findings.data())};
    if (report.isFinished) {
        if (report.blocksLeft != usual.blocksLeft) {
            result.findings.push_back(std::to_string(report.blocksLeft) + " blocks of memory are left, not " +
                                      std::to_string(usual.blocksLeft));
        }
    } else if (TimesStruck() == 0 || !IsPrescribed(order, Outcome::Died)) {
        result.findings.push_back(WIFSIGNALED(status) ? "died by signal " + std::to_string(WTERMSIG(status))
                                                      : "ended without a report");
    }
    return result;
}

Undisturbed RunUndisturbed(Scene& scene, std::vector<std::string>& findings) {
    (void)RunInProcess(scene, {}, "");
    const Report& report = SharedReport();
    Undisturbed usual;
    usual.document = report.document.data();
    usual.blocksLeft = report.blocksLeft;
    for (std::size_t kind = 0; kind < kKinds; ++kind) {
        usual.calls.at(kind) = CallsOf(static_cast<Kind>(kind));
    }
    findings = Lines(report.findings.data());
    if (report.outcome != Outcome::Success) {
        findings.emplace_back(std::string("the undisturbed run ended with ") + NameOf(report.outcome));
    }
    if (!scene.IsFirstUse() && usual.blocksLeft != 0) {
        findings.emplace_back("the undisturbed run leaves memory behind");
    }
    return usual;
}

}  // namespace faults
