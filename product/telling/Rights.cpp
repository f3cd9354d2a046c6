#include "Rights.h"

#include <grp.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace telling {
namespace {

using Capabilities = std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3>;

bool HasRights(std::initializer_list<unsigned> wanted) noexcept {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    Capabilities sets{};
    bool hasAll = ::syscall(SYS_capget, &header, sets.data()) == 0;
    for (const unsigned each : wanted) {
        hasAll = hasAll && (sets.at(CAP_TO_INDEX(each)).effective & CAP_TO_MASK(each)) != 0;
    }
    return hasAll;
}

// A change of user makes the kernel forget that the process is to end with its parent.
void BecomeNobody() noexcept {
    constexpr uid_t kNobody = 65534;
    const pid_t parent = ::getppid();
    (void)::setgroups(0, nullptr);
    (void)!::setresgid(kNobody, kNobody, kNobody);
    (void)!::setresuid(kNobody, kNobody, kNobody);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
    if (::getppid() != parent) {
        ::raise(SIGKILL);
    }
}

}  // namespace

void DropAmbientRights() noexcept {
    ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
}

// Without the right to end processes of others the service could not end a nobody. Where a user namespace has
// no nobody the process stays who it is, without capabilities.
void GiveUpRights() noexcept {
    if (HasRights({CAP_SETUID, CAP_SETGID, CAP_KILL})) {
        BecomeNobody();
    }
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const Capabilities none{};
    (void)::syscall(SYS_capset, &header, none.data());
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
}

}  // namespace telling
