#include "basics/HeldSignals.h"

namespace basics {

HeldSignals::HeldSignals() noexcept {
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        ::sigaddset(&held, signal);
    }
    ::sigprocmask(SIG_BLOCK, &held, &m_Mask);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGXFSZ, &ignore, &m_TooLarge);
}

HeldSignals::~HeldSignals() {
    ::sigaction(SIGXFSZ, &m_TooLarge, nullptr);
    ::sigprocmask(SIG_SETMASK, &m_Mask, nullptr);
}

}  // namespace basics
