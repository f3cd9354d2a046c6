#include "Keeper.h"

#include "Listening.h"
#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "board/Wire.h"

#include <fcntl.h>
#include <pwd.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <utility>

namespace service {
namespace {

using std::chrono::milliseconds;

constexpr const char* kUsualSocket = "unix:/run/mngsrvraid/mngsrvraid.sock";
constexpr milliseconds kFirstPause{100};
constexpr milliseconds kLongestPause{30'000};
constexpr std::chrono::minutes kLongEnough{1};
constexpr std::size_t kMostAtATime = 64;  // The watch has its turn, too.

void SetUser(const std::string& name, board::Settings& settings) {
    if (::geteuid() != 0) {
        return;
    }
    const passwd* const user = ::getpwnam(name.c_str());
    if (user == nullptr || user->pw_uid == 0) {
        basics::FailSurroundings("doors_user: " + name + " is no user without rights");
    }
    settings.user = user->pw_uid;
    settings.group = user->pw_gid;
}

void SetFiles(const DoorsConfiguration& doors, board::Settings& settings) {
    const auto isEncrypted = [](const Address& address) { return address.isEncrypted; };
    if (doors.listen && std::any_of(doors.listen->begin(), doors.listen->end(), isEncrypted)) {
        settings.certificate = basics::ReadFile(*doors.certificate);
        settings.key = basics::ReadFile(*doors.key);
    }
    if (doors.accounts) {
        settings.accounts = basics::ReadFile(*doors.accounts);
    }
    settings.metricsFrom = doors.metricsFrom;
}

/// Only what is safe between fork and the program.
[[noreturn]] void BecomeDoors(const char* const* words, const std::vector<int>& kept) noexcept {
    sigset_t none;
    ::sigemptyset(&none);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD, SIGPIPE, SIGUSR1}) {
        ::signal(signal, SIG_DFL);
    }
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int descriptor : kept) {
        ::fcntl(descriptor, F_SETFD, 0);
    }
    ::execv(words[0], const_cast<char* const*>(words));
    constexpr int kNoProgram = 127;
    ::_exit(kNoProgram);
}

}  // namespace

std::string ProgramBeside(const char* name) {
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name).string();
}

Keeper::~Keeper() {
    End();
    Leave({});
}

// What is in the file system goes with whoever answers there.
void Keeper::Leave(const std::vector<Socket>& kept) const {
    for (const Socket& each : m_Sockets) {
        const bool isKept = std::any_of(kept.begin(), kept.end(), [&](const Socket& other) {
            return other.address.text == each.address.text;
        });
        if (!each.address.path.empty() && !isKept) {
            (void)::unlink(each.address.path.c_str());
        }
    }
}

// The same address cannot be had twice: what stays is kept.
std::vector<Keeper::Socket> Keeper::Listen(const std::vector<Address>& addresses) {
    std::vector<Socket> sockets;
    for (const Address& address : addresses) {
        const auto old = std::find_if(m_Sockets.begin(), m_Sockets.end(),
                                      [&](const Socket& each) { return each.address.text == address.text; });
        basics::Descriptor descriptor(old == m_Sockets.end()
                                          ? ListenOn(address).Release()
                                          : ::fcntl(old->descriptor.Number(), F_DUPFD_CLOEXEC, 0));
        sockets.push_back({std::move(descriptor), address});
    }
    return sockets;
}

void Keeper::Configure(const DoorsConfiguration& doors, std::chrono::seconds interval, TimePoint now) {
    board::Settings settings;
    settings.interval = interval;
    SetUser(doors.user, settings);
    SetFiles(doors, settings);
    std::vector<Socket> sockets;
    if (doors.listen) {
        sockets = Listen(*doors.listen);
    } else {
        try {
            sockets = Listen({*AddressFrom(kUsualSocket)});
        } catch (const basics::Failure& error) {
            m_Sources.log(std::string(error.what()) + "; the service goes on without");
        }
    }
    for (const Socket& socket : sockets) {
        settings.listeners.push_back(
            {static_cast<std::uint32_t>(socket.descriptor.Number()), socket.address.isEncrypted});
    }
    End();
    Leave(sockets);
    m_Sockets = std::move(sockets);
    m_Settings = std::move(settings);
    m_Pause = milliseconds(0);
    m_Due = m_Sockets.empty() ? std::nullopt : std::optional(now);
}

void Keeper::Work(TimePoint now) {
    if (m_Due && now >= *m_Due) {
        m_Due.reset();
        Start(now);
    }
}

std::optional<Keeper::TimePoint> Keeper::NextDue() const {
    return m_Due;
}

void Keeper::Start(TimePoint now) {
    m_Started = now;
    try {
        const std::string program = ProgramBeside("mngsrvraid-doors");
        auto [link, end] = board::Link::MakePair();
        const std::string number = std::to_string(end.Number());
        const std::array<const char*, 3> words = {program.c_str(), number.c_str(), nullptr};
        std::vector<int> kept = {end.Number()};
        for (const Socket& socket : m_Sockets) {
            kept.push_back(socket.descriptor.Number());
        }
        const pid_t process = ::fork();
        if (process < 0) {
            basics::FailSurroundings("no process can be made: " + basics::ErrorText(errno));
        }
        if (process == 0) {
            BecomeDoors(words.data(), kept);
        }
        m_Process = process;
        ++m_Round;
        m_Link.emplace(std::move(link));
        Send(board::MessageKind::Settings, Pack(m_Settings));
        if (const std::vector<board::DriveReport> drives = m_Sources.drives(); !drives.empty()) {
            Send(board::MessageKind::Drives, Pack(drives));
        }
        TellReport();
    } catch (const std::exception& error) {  // The watch goes on, whatever keeps clients out.
        End();
        m_Sources.log(std::string("the doors cannot be opened: ") + error.what());
        m_Due = now + kLongestPause;
    }
}

bool Keeper::Ended(pid_t process, int status, TimePoint now) {
    if (process != m_Process) {
        return false;
    }
    m_Process = -1;
    m_Link.reset();
    m_Pause = now - m_Started >= kLongEnough ? milliseconds(0) : m_Pause;
    m_Pause = std::clamp(2 * m_Pause, kFirstPause, kLongestPause);
    m_Due = now + m_Pause;
    m_Sources.log("the process that faces the network ended " +
                  (WIFSIGNALED(status) ? "by signal " + std::to_string(WTERMSIG(status))
                                       : "with status " + std::to_string(WEXITSTATUS(status))) +
                  "; it is started again");
    return true;
}

// A process that takes nothing any more is of no use.
void Keeper::Send(board::MessageKind kind, const std::string& bytes) {
    if (m_Link && !m_Link->Send(kind, bytes) && m_Process > 0) {
        ::kill(m_Process, SIGKILL);
    }
}

void Keeper::TellDrive(board::DriveReport drive) {
    if (m_Link) {
        Send(board::MessageKind::Drives, Pack(std::vector<board::DriveReport>{std::move(drive)}));
    }
}

void Keeper::TellReport() {
    if (m_Link) {
        Send(board::MessageKind::Report, Pack(m_Sources.report()));
    }
}

void Keeper::TellOutcome(const board::Outcome& outcome) {
    if (m_Link) {
        Send(board::MessageKind::Outcome, Pack(outcome));
    }
}

std::vector<board::Call> Keeper::TakeCalls() {
    std::vector<board::Call> calls;
    try {
        while (m_Link && calls.size() < kMostAtATime) {
            const std::optional<board::Message> message = m_Link->Receive();
            if (!message) {
                break;
            }
            calls.push_back(board::UnpackCall(message->bytes));
        }
    } catch (const board::WireError& error) {
        m_Sources.log(std::string("the process that faces the network: ") + error.what());
        m_Link.reset();
        ::kill(m_Process, SIGKILL);
    }
    return calls;
}

void Keeper::End() {
    m_Link.reset();
    m_Due.reset();
    if (m_Process > 0) {
        ::kill(m_Process, SIGKILL);
        (void)::waitpid(m_Process, nullptr, 0);
        m_Process = -1;
    }
}

}  // namespace service
