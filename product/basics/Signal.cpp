#include "basics/Signal.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

namespace basics {

void DieBy(int signal) noexcept {
    const rlimit noCore{};  // Who died by it first has left one if anybody wants it.
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::signal(signal, SIG_DFL);
    sigset_t only;
    ::sigemptyset(&only);
    ::sigaddset(&only, signal);
    ::kill(::getpid(), signal);
    ::sigprocmask(SIG_UNBLOCK, &only, nullptr);
    ::_exit(kSignalStatusBase + signal);  // The first process of a container does not die by a signal.
}

}  // namespace basics
