#include "Folders.h"

#include "Trial.h"

#include "qel/portable/CTraceOutput.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <system_error>

namespace fs = std::filesystem;

namespace faults {
namespace {

constexpr uid_t kNobody = 65534;

void Check(int result, const char* what) {
    if (result != 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
}

void Mount(unsigned long flags, const char* data) {
    Check(::mount("tmpfs", Root::ResultFolder().c_str(), "tmpfs", flags, data), "mount");
}

void Unmount() {
    Check(::umount(Root::ResultFolder().c_str()), "umount");
}

fs::path Aside() {
    return Root::Path() / "tmp" / "aside";
}

void PutAside() {
    fs::rename(Root::ResultFolder(), Aside());
}

void PutBack() {
    fs::remove(Root::ResultFolder());
    fs::rename(Aside(), Root::ResultFolder());
}

// Root may do everything, whatever the mode.
void DenyWriting(const fs::path& folder) {
    Check(::chmod(folder.c_str(), 0555), "chmod");
    Check(::geteuid() == 0 ? ::seteuid(kNobody) : 0, "seteuid");
}

void AllowWriting(const fs::path& folder) {
    Check(::getuid() == 0 ? ::seteuid(0) : 0, "seteuid");
    Check(::chmod(folder.c_str(), 0777), "chmod");
}

struct Spoiling {
    const char* name;
    Outcome expected;
    void (*before)();
    void (*after)();
};

constexpr Spoiling kSpoilings[] = {
    {"full disk", Outcome::Tool01, [] { Mount(0, "size=4k"); }, Unmount},
    {"no file to be had", Outcome::Tool01, [] { Mount(0, "nr_inodes=1"); }, Unmount},
    {"read-only file system", Outcome::Tool01, [] { Mount(MS_RDONLY, nullptr); }, Unmount},
    {"file in its place", Outcome::Tool01,
     [] {
         PutAside();
         std::ofstream(Root::ResultFolder()) << "mine\n";
     },
     [] {
         if (fs::file_size(Root::ResultFolder()) != 5) {
             throw std::runtime_error("the file in the folder's place was changed");
         }
         PutBack();
     }},
    {"link to nowhere", Outcome::Tool01,
     [] {
         PutAside();
         fs::create_symlink("nowhere", Root::ResultFolder());
     },
     PutBack},
    {"link to a folder", Outcome::Success,
     [] {
         PutAside();
         fs::create_symlink("aside", Root::ResultFolder());
     },
     PutBack},
    {"not writable", Outcome::Tool01, [] { DenyWriting(Root::ResultFolder()); },
     [] { AllowWriting(Root::ResultFolder()); }},
    {"cannot be made", Outcome::Tool01,
     [] {
         fs::remove(Root::ResultFolder());
         DenyWriting(Root::ResultFolder().parent_path());
     },
     [] { AllowWriting(Root::ResultFolder().parent_path()); }},
    {"missing", Outcome::Success, [] { fs::remove_all(Root::ResultFolder().parent_path()); }, [] {}},
    {"trace on a full disk", Outcome::Success,
     [] {
         Check(CTraceOutput::OpenFile("/dev/full") ? 0 : -1, "trace");
         CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
     },
     [] { CTraceOutput::UseStandardError(), CTraceOutput::SetLevels(0); }},
};

}  // namespace

unsigned long TryFolders(Scene& scene) {
    const Undisturbed usual = RunUndisturbed(scene);
    unsigned long findings = 0;
    for (const Spoiling& one : kSpoilings) {
        Trial trial;
        trial.expected = one.expected;
        trial.before = one.before;
        trial.after = one.after;
        const TrialResult result = RunTrial(scene, trial, usual);
        std::printf("%-22s %s\n", one.name, NameOf(result.outcome));
        for (const std::string& finding : result.findings) {
            std::printf("finding: %s: %s\n", one.name, finding.c_str());
            ++findings;
        }
    }
    return findings;
}

}  // namespace faults
