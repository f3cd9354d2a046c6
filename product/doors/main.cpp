// The doors of the service mngsrvraidd: the process that faces the network. It is started by the service, and
// knows of the server what that tells it.

#include "Accounts.h"
#include "Backroom.h"
#include "Calls.h"
#include "Rights.h"
#include "Routes.h"
#include "Server.h"
#include "Sight.h"
#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "board/Wire.h"
#include "inventory/Document.h"

#include <gnutls/gnutls.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace doors {
namespace {

using basics::Failure;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::chrono::seconds kSignOfLife{20};

void Say(const std::string& line) {
    (void)basics::WriteWhole(STDERR_FILENO, "mngsrvraid-doors: " + basics::OneLine(line) + "\n");
}

/// A descriptor for each client, as many as the system allows.
void TakeDescriptors() {
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        (void)::setrlimit(RLIMIT_NOFILE, &files);
    }
}

unsigned ConnectionsAllowed() {
    constexpr rlim_t kOurs = 64;
    constexpr rlim_t kMost = 12000;
    rlimit files{};
    (void)::getrlimit(RLIMIT_NOFILE, &files);
    return static_cast<unsigned>(std::clamp<rlim_t>(files.rlim_cur, kOurs + 1, kMost + kOurs) - kOurs);
}

board::Message WaitForFirst(board::Link& link) {
    pollfd service = {link.Number(), POLLIN, 0};
    while (true) {
        if (std::optional<board::Message> message = link.Receive()) {
            return std::move(*message);
        }
        (void)::poll(&service, 1, -1);
    }
}

board::Settings ReadSettings(board::Link& link) {
    const board::Message message = WaitForFirst(link);
    if (message.kind != board::MessageKind::Settings) {
        throw board::WireError("the service tells something else before the settings");
    }
    return board::UnpackSettings(message.bytes);
}

std::optional<AccountList> AccountsOf(const board::Settings& settings) {
    return settings.accounts ? std::optional(AccountList::Read(*settings.accounts)) : std::nullopt;
}

Networks NetworksOf(const board::Settings& settings) {
    std::optional<Networks> networks = Networks::From(settings.metricsFrom);
    if (!networks) {
        throw Failure(Failure::Kind::Use, "metrics_from holds what is no address and no net");
    }
    return std::move(*networks);
}

class House final {
  public:
    House(board::Link link, const board::Settings& settings)
        : m_Link(std::move(link)),
          m_Accounts(AccountsOf(settings)),
          m_Calls(m_Link),
          m_Routes({m_Accounts, m_Backroom, m_Calls}, NetworksOf(settings), settings.interval, Say),
          m_Server([this](const std::shared_ptr<Exchange>& exchange) { m_Routes.Handle(exchange); },
                   {.connections = ConnectionsAllowed()}) {
        for (const board::Settings::Listener& listener : settings.listeners) {
            m_Server.Listen(basics::Descriptor(static_cast<int>(listener.descriptor)),
                            listener.isEncrypted
                                ? std::optional(Encryption{settings.key, settings.certificate})
                                : std::nullopt);
        }
        GiveUpRights(settings.user, settings.group);
    }

    /// Until the service is gone.
    [[noreturn]] void Run() {
        while (true) {
            TakeNews();
            Wait(m_Server.Work());
            m_Backroom.TellWhatIsDone();
            if (const auto now = steady_clock::now(); now >= m_NextSign) {
                m_Routes.KeepStreamsAlive();
                m_NextSign = now + kSignOfLife;
            }
        }
    }

  private:
    void TakeNews() {
        while (const std::optional<board::Message> message = m_Link.Receive()) {
            if (message->kind == board::MessageKind::Outcome) {
                m_Calls.Take(board::UnpackOutcome(message->bytes));
            } else if (m_Sight.Take(*message)) {
                m_Routes.Show(m_Sight.Now());
            }
        }
    }

    void Wait(std::optional<milliseconds> due) {
        if (m_Routes.HasStreams()) {
            due = std::min(due.value_or(kSignOfLife), milliseconds(kSignOfLife));
        }
        std::vector<pollfd> polled = {{m_Link.Number(), POLLIN, 0}, {m_Backroom.Number(), POLLIN, 0}};
        for (const int number : m_Server.Numbers()) {
            polled.push_back({number, POLLIN, 0});
        }
        (void)::poll(polled.data(), polled.size(), due ? static_cast<int>(due->count()) : -1);
    }

    board::Link m_Link;
    Accounts m_Accounts;
    Backroom m_Backroom;
    Calls m_Calls;
    Sight m_Sight;
    Routes m_Routes;
    Server m_Server;
    steady_clock::time_point m_NextSign = steady_clock::now() + kSignOfLife;
};

int Run(int count, const char* const* words) {
    const std::optional<int> number = count == 2 ? basics::NumberFrom<int>(words[1]) : std::nullopt;
    if (!number || *number <= STDERR_FILENO) {
        Say("started by mngsrvraidd, not by hand; see mngsrvraidd --help");
        return 2;
    }
    std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(signal,
                    SIG_IGN);  // They are the service's business, and its end is the end of this, too.
    }
    TakeDescriptors();
    board::Link link(basics::Descriptor(*number), board::Link::End::Doors);
    const board::Settings settings = ReadSettings(link);
    House(std::move(link), settings).Run();
}

int RunAndReport(int count, const char* const* words) {
    try {
        return Run(count, words);
    } catch (const board::WireError& error) {
        Say(error.what());
    } catch (const Failure& error) {
        Say(error.what());
        return error.WhatKind() == Failure::Kind::Use ? 2 : 4;
    } catch (const std::exception& error) {
        Say(std::string("cannot go on: ") + error.what());
    }
    return 1;
}

}  // namespace
}  // namespace doors

int main(int count, char** words) {
    return doors::RunAndReport(count, words);
}
