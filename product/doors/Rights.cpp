#include "Rights.h"

#include "basics/Failure.h"

#include <grp.h>
#include <linux/capability.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <string>

namespace doors {
namespace {

[[noreturn]] void Fail(const std::string& what) {
    basics::FailSurroundings("rights cannot be given up: " + what + ": " + basics::ErrorText(errno));
}

void ChangeUser(std::uint32_t user, std::uint32_t group) {
    if (::setgroups(0, nullptr) != 0 || ::setresgid(group, group, group) != 0 ||
        ::setresuid(user, user, user) != 0) {
        Fail("the user");
    }
}

// Who is not root may have been given some nevertheless, as AmbientCapabilities= of systemd does.
void DropCapabilities() {
    constexpr std::size_t kSets = 2;  // A set has 64 bits, in two halves.
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, kSets> none{};
    if (::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0) != 0 ||
        ::syscall(SYS_capset, &header, none.data()) != 0) {
        Fail("capabilities");
    }
}

void Limit(__rlimit_resource_t resource) {
    const rlimit none{0, 0};
    if (::setrlimit(resource, &none) != 0) {
        Fail("a limit");
    }
}

#if !defined(__SANITIZE_ADDRESS__)  // Sanitizers want more of the system than we do.

// What a thread needs that reads, writes, waits and takes memory. Whatever else is asked for ends the
// process, but for what libraries try and can do without.
constexpr std::array kAllowed = {
    "accept",
    "accept4",
    "brk",
    "clock_gettime",
    "clock_nanosleep",
    "close",
    "epoll_ctl",
    "epoll_pwait",
    "epoll_wait",
    "exit",
    "exit_group",
    "fcntl",
    "fstat",
    "futex",
    "getpeername",
    "getpid",
    "getrandom",
    "getsockname",
    "getsockopt",
    "gettid",
    "gettimeofday",
    "lseek",
    "madvise",
    "mmap",
    "mprotect",
    "mremap",
    "munmap",
    "nanosleep",
    "poll",
    "ppoll",
    "pread64",
    "read",
    "readv",
    "recvfrom",
    "recvmsg",
    "restart_syscall",
    "rseq",
    "rt_sigaction",
    "rt_sigprocmask",
    "rt_sigreturn",
    "sched_yield",
    "sendmsg",
    "sendto",
    "setsockopt",
    "shutdown",
    "sigaltstack",
    "tgkill",
    "time",
    "write",
    "writev",
    "sched_getaffinity",
    "sysinfo",
    "set_robust_list",
};
constexpr std::array kRefused = {
    "open",  "openat",    "stat",   "newfstatat", "access", "faccessat", "readlink", "readlinkat", "ioctl",
    "uname", "prlimit64", "getuid", "geteuid",    "getgid", "getegid",   "prctl",    "socket",     "sendfile",
};

struct Release {
    void operator()(void* filter) const noexcept { seccomp_release(filter); }
};

void Filter() {
    const std::unique_ptr<void, Release> filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
    if (!filter) {
        Fail("the list of system calls");
    }
    const auto add = [&](std::uint32_t action, const char* name) {
        const int number = seccomp_syscall_resolve_name(name);
        if (number != __NR_SCMP_ERROR && (errno = -seccomp_rule_add(filter.get(), action, number, 0)) != 0) {
            Fail(name);
        }
    };
    for (const char* const name : kAllowed) {
        add(SCMP_ACT_ALLOW, name);
    }
    for (const char* const name : kRefused) {
        add(SCMP_ACT_ERRNO(EPERM), name);
    }
    errno = -seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    if (errno != 0 || (errno = -seccomp_load(filter.get())) != 0) {
        Fail("the list of system calls");
    }
}

#else

void Filter() {}

#endif

}  // namespace

void BecomeNobody(std::uint32_t user, std::uint32_t group) {
    if (::geteuid() == 0) {
        ChangeUser(user, group);
    }
    DropCapabilities();
}

void GiveUpRights() {
    Limit(RLIMIT_CORE);
    Limit(RLIMIT_NPROC);
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0) {
        Fail("new ones");
    }
    Filter();
}

}  // namespace doors
