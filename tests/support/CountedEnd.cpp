// A child that ends without the process's exit handlers would take its counts of executed lines along.
#include <sys/syscall.h>
#include <unistd.h>

extern "C" void __gcov_dump();

void _exit(int status) {
    __gcov_dump();
    ::syscall(SYS_exit_group, status);
    __builtin_unreachable();
}
