#include "JournalEntry.h"

#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/Text.h"
#include "basics/Time.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace telling {
namespace {

constexpr std::string_view kSocket = "/run/systemd/journal/socket";
constexpr std::size_t kMostOfALineOut = 4000;  // A pipe that has room at all has room for it.

// One for each kind of event, in their order; journalctl MESSAGE_ID=... finds all of a kind.
constexpr std::array<const char*, 12> kMessageIds = {
    "c492910e6ca24357bc28c94c6778d7a1", "1f66dde807dd44c1b71d4e845409bfb5",
    "9b9f38184fca480697f17642a8025b6e", "65918ba304ce4433ad19f21a42464f98",
    "b468e197b71342b4beef1ffa4cfd69f6", "9b22909dc2764f11b3c26bc892b9085b",
    "2055b0b6060a4a2b87c91512131b8d1a", "c5f2747b10124262a169c67cb33b9d99",
    "6d20cc727c10428f808a83f664b5bd9d", "30abe5c3fa15448482aa639ce5f95ff6",
    "247936e082d741e89a1133555a437713", "36e2b0efb0f44d08bd60a1d80b835019"};

int PriorityOf(inventory::Level level) {
    switch (level) {
        case inventory::Level::Critical:
            return LOG_CRIT;
        case inventory::Level::Warning:
        case inventory::Level::Unknown:
            return LOG_WARNING;
        case inventory::Level::Ok:
            break;
    }
    return LOG_INFO;
}

using SendFunction = decltype(&sd_journal_sendv);

// Null where the system has no such library. It stays loaded.
SendFunction FindSend() {
    static const auto found = [] {
        void* const library = ::dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
        return library == nullptr ? nullptr
                                  : reinterpret_cast<SendFunction>(::dlsym(library, "sd_journal_sendv"));
    }();
    return found;
}

bool CanWrite(int descriptor) {
    pollfd place{descriptor, POLLOUT, 0};
    return ::poll(&place, 1, 0) == 1 &&
           place.revents == POLLOUT;  // An error, else: nobody will ever read it.
}

enum class State { Missing, Full, Ready };

// Sending waits for a journal that hangs, without end.
State StateOfJournal() {
    const basics::Descriptor probe(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(kSocket.begin(), kSocket.end(), std::begin(address.sun_path));
    if (::connect(probe.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return State::Missing;
    }
    return CanWrite(probe.Number()) ? State::Ready : State::Full;
}

std::string SendToJournal(SendFunction send, const Message& message) {
    std::vector<std::string> fields = {
        "MESSAGE=" + basics::Printable(watch::Describe(message.event)),
        "PRIORITY=" + std::to_string(PriorityOf(message.event.level)),
        std::string("MESSAGE_ID=") + kMessageIds.at(static_cast<std::size_t>(message.event.kind)),
        "SYSLOG_IDENTIFIER=mngsrvraidd",
    };
    for (std::string& field : FieldsOf(message)) {
        if (!field.ends_with('=')) {  // It has a value.
            fields.push_back(std::move(field));
        }
    }
    std::vector<iovec> pieces;
    pieces.reserve(fields.size());
    for (std::string& field : fields) {
        pieces.push_back({field.data(), field.size()});
    }
    const int result = send(pieces.data(), static_cast<int>(pieces.size()));
    return result < 0 ? "the journal does not take it: " + basics::ErrorText(-result) : "";
}

// Whether the system's manager reads standard error, and so understands priorities.
bool IsReadByManager() {
    const char* const stream = std::getenv("JOURNAL_STREAM");
    struct stat status {};
    return stream != nullptr && ::fstat(STDERR_FILENO, &status) == 0 &&
           stream == std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

std::string WriteToStandardError(const Message& message) {
    const watch::Event& event = message.event;
    const std::string begin = IsReadByManager() ? '<' + std::to_string(PriorityOf(event.level)) + '>'
                                                : basics::UtcText(event.at) + ' ';
    std::string line = begin + basics::Printable(watch::Describe(event));
    line += event.advice.empty() ? "" : " (" + basics::Printable(event.advice) + ')';
    line += message.dropped == 0 ? "" : " (" + DroppedNote(message) + ')';
    line = basics::Printable(std::string_view(line).substr(0, kMostOfALineOut));
    if (!CanWrite(STDERR_FILENO)) {
        return "nobody reads standard error";
    }
    const int error = basics::WriteWhole(STDERR_FILENO, line + '\n');
    return error == 0 ? "" : "standard error cannot be written: " + basics::ErrorText(error);
}

}  // namespace

std::string Tell(const Journal& journal, const Message& message) {
    const State state = journal.usesStandardError ? State::Missing : StateOfJournal();
    const SendFunction send = state == State::Missing ? nullptr : FindSend();
    if (send == nullptr) {
        return WriteToStandardError(message);
    }
    return state == State::Full ? "the journal does not take it: too much waits for it"
                                : SendToJournal(send, message);
}

}  // namespace telling
