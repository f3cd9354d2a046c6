#include "Worker.h"

#include "basics/Bytes.h"
#include "basics/Failure.h"
#include "basics/Processes.h"
#include "basics/Text.h"
#include "calls/Inquiry.h"
#include "calls/InstallRoot.h"
#include "calls/MethodCall.h"
#include "calls/Module.h"
#include "history/Reader.h"
#include "supervision/Supervisor.h"
#include "views/History.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <exception>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

namespace service {
namespace {

namespace fs = std::filesystem;

constexpr const char* kOtherPlace = "/dev/shm";
constexpr int kDone = 0;
constexpr int kFailed = 1;

// Where the process that watches says what it saw.
int g_Failure = -1;

basics::Descriptor MakeFile(const char* name) {
    basics::Descriptor file(::memfd_create(name, MFD_CLOEXEC));
    if (!file.IsOpen()) {
        basics::FailSurroundings("no memory for an answer: " + basics::ErrorText(errno));
    }
    return file;
}

/// "mngsrvraidd.4711-12": no other inquiry has it, so that it is known whose folder it is, however early it
/// ended.
std::string NextName() {
    static unsigned number = 0;
    return "mngsrvraidd." + std::to_string(::getpid()) + "-" + std::to_string(++number);
}

int TellEnd(const std::string& words) noexcept {
    (void)basics::WriteWhole(g_Failure, words);
    return kFailed;
}

std::string ContentOf(const basics::Descriptor& file) {
    struct stat status {};
    if (::fstat(file.Number(), &status) != 0) {
        return "";
    }
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t read =
            ::pread(file.Number(), content.data() + size, content.size() - size, static_cast<off_t>(size));
        if (read <= 0 && !(read < 0 && errno == EINTR)) {
            break;
        }
        size += read < 0 ? 0 : static_cast<std::size_t>(read);
    }
    content.resize(size);
    return content;
}

/// None where they are not whole, or the module has spoiled what its process counts.
inventory::ToolRuns RunsIn(const basics::Descriptor& file) {
    const std::string content = ContentOf(file);
    const auto runs = basics::ValueIn<inventory::ToolRuns>(content);
    const double duration = runs.duration.count();
    const bool isGood = content.size() == sizeof runs && std::isfinite(duration) && duration >= 0;
    return isGood ? runs : inventory::ToolRuns{};
}

// What the service takes by a descriptor is for the worker what it is for any process.
void TakeSignalsAsUsual() noexcept {
    sigset_t none;
    ::sigemptyset(&none);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD, SIGPIPE, SIGUSR1}) {
        ::signal(signal, SIG_DFL);
    }
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

/// As the framework calls it, whatever comes of it: the client gets to see that.
board::Outcome MakeCall(const board::Call& call) {
    const auto textOf = [](const std::optional<std::int64_t>& number) {
        return number ? std::to_string(*number) : std::string();
    };
    calls::MethodRequest request{.appKey = call.appKey, .leavesOutEmpty = true};
    if (call.what == board::Call::What::GetPDInfo) {
        request.drive = calls::DrivePlace{textOf(call.controller), textOf(call.enclosure), textOf(call.slot)};
    }
    const calls::Module module = calls::Module::Load(calls::Module::DefaultPath());
    calls::MethodOutcome outcome = CallMethod(module.Provider(), request);
    return {.id = call.id,
            .failure = outcome.exception,
            .status = static_cast<std::uint32_t>(outcome.status),
            .returnValue = outcome.returnValue,
            .document = std::move(outcome.document)};
}

template <typename Told>
std::string InFormat(const Told& told, const board::Call& call, const std::string& host) {
    if (call.what == board::Call::What::HistoryJson) {
        return views::HistoryJson(told, host);
    }
    if constexpr (std::is_same_v<Told, history::Overview>) {
        return views::HistoryHtml(told, host, "/history?part=");
    } else {
        return views::HistoryHtml(told, host);
    }
}

/// What is remembered of a part, or of all. A part that is not known comes to no document.
board::Outcome Recall(const board::Call& call, const WorkerSettings& settings) {
    constexpr std::chrono::hours kSince{30 * 24};
    history::Reader reader(settings.history);
    const history::Overview overview = reader.Parts();
    board::Outcome outcome{.id = call.id};
    if (!call.part) {
        outcome.document = InFormat(overview, call, settings.host);
        return outcome;
    }
    const auto part = std::find_if(overview.parts.begin(), overview.parts.end(),
                                   [&](const history::Part& each) { return each.key == *call.part; });
    if (part != overview.parts.end()) {
        outcome.document =
            InFormat(reader.HistoryOf(*part, std::chrono::system_clock::now() - kSince), call, settings.host);
    }
    return outcome;
}

}  // namespace

Worker::Worker(const WorkerSettings& settings, Question question)
    : m_Question(std::move(question)),
      m_Name(NextName()),
      m_Document(MakeFile("document")),
      m_Failure(MakeFile("failure")),
      m_Runs(MakeFile("runs")) {
    const pid_t service = ::getpid();
    m_Process = ::fork();
    if (m_Process < 0) {
        basics::FailSurroundings("no process can be made: " + basics::ErrorText(errno));
    }
    if (m_Process == 0) {
        TakeSignalsAsUsual();
        ::setsid();
        // A service that is killed leaves no inquiry behind.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM, 0, 0, 0);
        if (::getppid() != service) {
            ::_exit(kFailed);
        }
        Work(settings);
    }
}

Answer Worker::AnswerOf(const WorkerSettings& settings) const {
    if (m_Question.call) {
        const bool isRemembered = m_Question.call->what == board::Call::What::HistoryPage ||
                                  m_Question.call->what == board::Call::What::HistoryJson;
        return {Pack(isRemembered ? Recall(*m_Question.call, settings) : MakeCall(*m_Question.call))};
    }
    calls::Inquiry inquiry({.appKey = settings.appKey, .scenario = settings.scenario});
    std::string document = m_Question.drive ? inquiry.AskForDrive(*m_Question.drive) : inquiry.AskForServer();
    return {std::move(document), "", inquiry.Runs()};
}

void Worker::Work(const WorkerSettings& settings) const noexcept {
    std::string failure;
    try {
        g_Failure = m_Failure.Number();
        const std::string folder = supervision::Supervise({.program = "mngsrvraidd",
                                                           .timeLimit = settings.timeLimit,
                                                           .overtimeStatus = kFailed,
                                                           .tellEnd = TellEnd,
                                                           .privateFolder = m_Name.c_str(),
                                                           .otherPlaces = {kOtherPlace}});
        calls::UsePrivateRoot(folder);
        const Answer answer = AnswerOf(settings);
        // An answer is one without them, too.
        (void)basics::WriteWhole(m_Runs.Number(), basics::BytesOf(answer.runs));
        if (const int error = basics::WriteWhole(m_Document.Number(), answer.document); error == 0) {
            ::_exit(kDone);
        } else {
            failure = "the answer cannot be kept: " + basics::ErrorText(error);
        }
    } catch (const std::exception& error) {
        (void)basics::WriteWhole(m_Failure.Number(), error.what());
        ::_exit(kFailed);
    } catch (...) {
        failure = "something unknown was thrown";
    }
    (void)basics::WriteWhole(m_Failure.Number(), failure);
    ::_exit(kFailed);
}

void Worker::Interrupt() const noexcept {
    ::kill(m_Process, SIGTERM);
}

// What watches the inquiry was ended itself, as somebody who needs memory does: it leaves behind whatever it
// was to end, in its session, and to remove.
void Worker::CleanUp() const {
    constexpr int kMostLooks = 20;
    std::vector<pid_t> left = basics::MembersOf(m_Process);
    for (int look = 0; look < kMostLooks && !left.empty(); ++look) {
        for (const pid_t process : left) {
            ::kill(process, SIGKILL);
        }
        left = basics::MembersOf(m_Process);
    }
    std::error_code ignored;  // They are places for temporary files.
    for (const fs::path& place : {fs::temp_directory_path(ignored), fs::path(kOtherPlace)}) {
        for (fs::directory_iterator at(place, ignored), end; !ignored && at != end; at.increment(ignored)) {
            if (at->path().filename().string().starts_with(m_Name + '.')) {
                fs::remove_all(at->path(), ignored);
                break;
            }
        }
    }
}

Answer Worker::Take(int status) const {
    if (WIFSIGNALED(status)) {
        CleanUp();
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == kDone) {
        return {ContentOf(m_Document), "", RunsIn(m_Runs)};
    }
    std::string failure = basics::OneLine(ContentOf(m_Failure));
    if (failure.empty()) {
        failure = WIFSIGNALED(status)
                      ? "the process that asks was ended by signal " + std::to_string(WTERMSIG(status))
                      : "the process that asks ended with status " + std::to_string(WEXITSTATUS(status));
    }
    return {"", failure};
}

}  // namespace service
