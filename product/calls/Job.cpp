#include "Job.h"

#include "ToolRun.h"
#include "basics/Bytes.h"
#include "basics/Failure.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <stdexcept>

namespace calls {
namespace {

using basics::BytesOf;
using basics::Descriptor;
using basics::Failure;
using basics::ValueIn;
using inventory::ToolRuns;

struct Header {
    std::uint64_t size = 0;
    char kind = '\0';
};

// False where nobody is at the other end any more, which must not end this process.
bool SendWhole(int socket, std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    return true;
}

void Tell(int socket, char kind, std::string_view content) {
    if (!SendWhole(socket, BytesOf(Header{content.size(), kind})) || !SendWhole(socket, content)) {
        throw std::runtime_error("nobody is there to be told");
    }
}

/// Passes on which command runs.
class ProgressTeller final : public ProgressReceiver {
  public:
    explicit ProgressTeller(int socket) : m_Socket(socket) {}
    void Show(std::string_view command) override { Tell(m_Socket, 'c', command); }
    void ShowDone(std::size_t /*done*/, std::size_t /*total*/) override {}

  private:
    int m_Socket;
};

ToolRuns RunsSince(const ToolRuns& before, const ToolRuns& now) {
    return {now.commands - before.commands, now.failures - before.failures,
            now.failedRuns - before.failedRuns, now.duration - before.duration};
}

/// The process's part.
class Asking final {
  public:
    Asking(int socket, const InquiryRequest& request, const std::vector<DrivePlace>& places)
        : m_Socket(socket), m_Request(request), m_Places(places), m_Progress(socket) {
        if (m_Request.progress != nullptr) {
            m_Request.progress = &m_Progress;
        }
    }

    void Run() {
        std::uint64_t number = 0;
        while (::recv(m_Socket, &number, sizeof number, MSG_WAITALL) == sizeof number) {
            const Job::Message answer = AnswerOf(m_Places.at(number));
            if (m_Inquiry) {
                const ToolRuns runs = m_Inquiry->Runs();
                Tell(m_Socket, 'r', BytesOf(RunsSince(m_Told, runs)));
                m_Told = runs;
            }
            Tell(m_Socket, answer.kind, answer.content);
        }
    }

  private:
    Job::Message AnswerOf(const DrivePlace& place) {
        try {
            if (!m_Inquiry) {
                m_Inquiry.emplace(m_Request);
            }
            return {'d', m_Inquiry->AskForDrive(place)};
        } catch (const Failure& error) {
            return {'f', BytesOf(error.WhatKind()) + error.what()};
        }
    }

    int m_Socket;
    InquiryRequest m_Request;
    const std::vector<DrivePlace>& m_Places;
    ProgressTeller m_Progress;
    std::optional<Inquiry> m_Inquiry;
    ToolRuns m_Told;
};

// The process may have a thread that draws the progress; it holds nothing that is needed here.
[[noreturn]] void BecomeJob(int socket, pid_t parent, const InquiryRequest& request,
                            const std::vector<DrivePlace>& places) noexcept {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    int status = 1;
    try {
        if (::getppid() == parent) {
            Asking(socket, request, places).Run();
            status = 0;
        }
    } catch (...) {
        status = 1;  // As good as lost: whoever asked is told so.
    }
    // Not exit(): what else the parent had is the parent's.
    ::_exit(status);
}

}  // namespace

Job::Job(const InquiryRequest& request, const std::vector<DrivePlace>& places) {
    std::array<int, 2> ends{};
    const bool isConnected = ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) == 0;
    Descriptor mine(isConnected ? ends[0] : -1);
    const Descriptor its(isConnected ? ends[1] : -1);
    const pid_t parent = ::getpid();
    m_Process = isConnected ? ::fork() : -1;
    if (m_Process == 0) {
        mine.Close();
        BecomeJob(its.Number(), parent, request, places);
    }
    if (m_Process < 0) {
        basics::FailSurroundings("no process can be made for a job: " + basics::ErrorText(errno) +
                                 "; ask for fewer by --jobs");
    }
    m_Socket = std::move(mine);
}

Job::~Job() {
    if (m_Process > 0) {
        // One that is idle ends by itself when nobody is left to tell it more. Its siblings have copies of
        // the descriptor, so closing it would not do.
        ::shutdown(m_Socket.Number(), SHUT_RDWR);
        if (m_Number) {
            ::kill(m_Process, SIGKILL);
        }
        (void)End();
    }
}

void Job::Ask(std::size_t number) {
    m_Number = number;
    // Where it is lost already, receiving tells.
    (void)SendWhole(m_Socket.Number(), BytesOf(std::uint64_t{number}));
}

bool Job::Receive() {
    constexpr std::size_t kChunk = 1U << 16U;
    const std::size_t before = m_Received.size();
    m_Received.resize(before + kChunk);
    ssize_t count = -1;
    do {
        count = ::recv(m_Socket.Number(), m_Received.data() + before, kChunk, 0);
    } while (count < 0 && errno == EINTR);
    m_Received.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
}

std::optional<Job::Message> Job::Next() {
    if (m_Received.size() < sizeof(Header)) {
        return std::nullopt;
    }
    const auto header = ValueIn<Header>(m_Received);
    if (m_Received.size() - sizeof(Header) < header.size) {
        return std::nullopt;
    }
    Message message{header.kind, m_Received.substr(sizeof(Header), header.size)};
    m_Received.erase(0, sizeof(Header) + header.size);
    return message;
}

std::string Job::End() {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = ::waitpid(m_Process, &status, 0);
    } while (ended < 0 && errno == EINTR);
    m_Process = -1;
    return ended < 0 ? "nobody knows how" : DescribeStatus(status);
}

ToolRuns RunsIn(std::string_view content) {
    return ValueIn<ToolRuns>(content);
}

void ThrowFailureIn(const std::string& content) {
    const auto kind = ValueIn<Failure::Kind>(content);
    throw Failure(kind, content.substr(std::min(sizeof kind, content.size())));
}

}  // namespace calls
