#include "Worker.h"

#include "basics/Failure.h"
#include "basics/Text.h"
#include "calls/Inquiry.h"
#include "calls/InstallRoot.h"
#include "calls/MethodCall.h"
#include "calls/Module.h"
#include "supervision/Supervisor.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>

namespace service {
namespace {

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
    calls::MethodRequest request{.appKey = call.appKey};
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

}  // namespace

Worker::Worker(const WorkerSettings& settings, Question question)
    : m_Question(std::move(question)), m_Document(MakeFile("document")), m_Failure(MakeFile("failure")) {
    const pid_t service = ::getpid();
    m_Process = ::fork();
    if (m_Process < 0) {
        basics::FailSurroundings("no process can be made: " + basics::ErrorText(errno));
    }
    if (m_Process == 0) {
        TakeSignalsAsUsual();
        // A service that is killed leaves no inquiry behind.
        ::prctl(PR_SET_PDEATHSIG, SIGTERM, 0, 0, 0);
        if (::getppid() != service) {
            ::_exit(kFailed);
        }
        Work(settings);
    }
}

std::string Worker::AnswerOf(const WorkerSettings& settings) const {
    if (m_Question.call) {
        return Pack(MakeCall(*m_Question.call));
    }
    calls::Inquiry inquiry({.appKey = settings.appKey, .scenario = settings.scenario});
    return m_Question.drive ? inquiry.AskForDrive(*m_Question.drive) : inquiry.AskForServer();
}

void Worker::Work(const WorkerSettings& settings) const noexcept {
    std::string failure;
    try {
        g_Failure = m_Failure.Number();
        const std::string folder = supervision::Supervise({.program = "mngsrvraidd",
                                                           .timeLimit = settings.timeLimit,
                                                           .overtimeStatus = kFailed,
                                                           .tellEnd = TellEnd,
                                                           .privateFolder = "mngsrvraidd",
                                                           .otherPlaces = {"/dev/shm"}});
        calls::UsePrivateRoot(folder);
        const std::string document = AnswerOf(settings);
        if (const int error = basics::WriteWhole(m_Document.Number(), document); error == 0) {
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

Answer Worker::Take(int status) const {
    if (WIFEXITED(status) && WEXITSTATUS(status) == kDone) {
        return {ContentOf(m_Document), ""};
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
