#include "Checks.h"

#include "Trial.h"
#include "itemconv/QelLibIF.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string_view>

namespace faults {
namespace {

using Mischief = Caller::Mischief;

struct Case {
    const char* name;
    const char* noticed;  ///< how a finding about it begins or goes on
    Order order;
    Mischief mischief;
};

std::string LibraryPath() {
    return Root::Path() / "cim" / "libqel_MngSrv_QelLib.so";
}

// Not inlined, so that the address is nowhere when they return, where the leak sanitizer would take it for a
// use.
__attribute__((noinline)) void LoseByte(IWbemObjectSink& /*sink*/) {
    *static_cast<volatile char*>(std::malloc(1)) = 'x';
}

__attribute__((noinline)) void LoseItem(IWbemObjectSink& /*sink*/) {
    void* const library = ::dlopen(LibraryPath().c_str(), RTLD_LAZY);
    const auto create = reinterpret_cast<CreateItemDispFunction*>(::dlsym(library, "CreateItemDisp"));
    create("", "lost", "", "TRUE");
    ::dlclose(library);
}

void LeaveLibrary(IWbemObjectSink& /*sink*/) {
    (void)::dlopen(LibraryPath().c_str(), RTLD_LAZY);
}

void LeaveDescriptor(IWbemObjectSink& /*sink*/) {
    (void)::open("/dev/null", O_RDONLY);
}

void LeaveChild(IWbemObjectSink& /*sink*/) {
    if (::fork() == 0) {
        ::_exit(0);
    }
}

void LeaveFile(IWbemObjectSink& /*sink*/) {
    (void)::close(::open((Root::ResultFolder() / "left.txt").c_str(), O_WRONLY | O_CREAT, 0600));
}

void TellStatusTwice(IWbemObjectSink& sink) {
    sink.SetStatus(0, WBEM_S_NO_ERROR, nullptr, nullptr);
}

Mischief During(void (*what)(IWbemObjectSink&)) {
    Mischief mischief;
    mischief.duringCall = what;
    return mischief;
}

Mischief After(void (*what)(Observed&)) {
    Mischief mischief;
    mischief.afterCall = what;
    return mischief;
}

std::vector<Case> Cases() {
    const Order failToOpen{Kind::OpenStream, 2, false};
    const Order never{Kind::LoadLibrary, 2, false};
    return {
        {"a lost byte", "blocks of memory are left", {}, During(LoseByte)},
        {"a lost display item", "blocks of memory are left", {}, During(LoseItem)},
        {"a library that is not closed", "the conversion library is open still", {}, During(LeaveLibrary)},
        {"a descriptor that is not closed", "a descriptor is left", {}, During(LeaveDescriptor)},
        {"a child that nobody waits for", "a child is left", {}, During(LeaveChild)},
        {"a result file that is not deleted", "result files are left", {}, During(LeaveFile)},
        {"a status told twice", "not fitting: odd", {}, During(TellStatusTwice)},
        {"a crash", "died by signal 6", {}, During([](IWbemObjectSink&) { std::abort(); })},
        {"a document cut short", "another document", {}, After([](Observed& seen) {
             seen.document.pop_back();
         })},
        {"a failure with a document", "a failure with a document", failToOpen,
         After([](Observed& seen) { seen.document = "<RAID/>"; })},
        {"a failure taken for another", "not fitting: 05", failToOpen,
         After([](Observed& seen) { seen.outcome = Outcome::Library05; })},
        {"a failure taken for success", "not fitting: ok", failToOpen,
         After([](Observed& seen) { seen.outcome = Outcome::Success; })},
        {"a fault that never strikes", "never struck", never, {}},
        {"a module that is of no use afterwards", "the next run does not succeed", {}, After([](Observed&) {
             ::setenv("ZORBALT_INSTALL_DIR", "/nowhere", 1);
         })},
    };
}

}  // namespace

unsigned long ProveChecks(Scene& scene) {
    const Undisturbed usual = RunUndisturbed(scene);
    unsigned long unnoticed = 0;
    for (const Case& one : Cases()) {
        Trial trial;
        trial.order = one.order;
        trial.mischief = one.mischief;
        const TrialResult result = RunTrial(scene, trial, usual);
        const bool isNoticed = std::any_of(
            result.findings.begin(), result.findings.end(),
            [&](const std::string& finding) { return finding.find(one.noticed) != std::string::npos; });
        std::printf("%-12s %s\n", isNoticed ? "noticed" : "NOT NOTICED", one.name);
        unnoticed += isNoticed ? 0 : 1;
    }
    return unnoticed;
}

}  // namespace faults
