// Hosts with another environment, umask or working directory.
#include "UnkindHostTest.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace unkindhost {
namespace {

using testing::Each;
using testing::Field;

using EnvironmentTest = UnkindHostTest;

TEST_F(EnvironmentTest, MayBeEmpty) {
    const std::string seen = InHost([](Host& host) {
        ::clearenv();  // The install root is the build tree then.
        EXPECT_EQ(environ, nullptr);
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(EnvironmentTest, MayLackTheSearchPath) {
    const std::string seen = InHost([](Host& host) {
        ::unsetenv("PATH");
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

TEST_F(EnvironmentTest, WithASearchPathWithoutAShellNoToolRuns) {
    const std::string seen = InHost([](Host& host) {
        ::setenv("PATH", "/no/such/folder", 1);
        const std::string text = host.Ask();
        ::setenv("PATH", "/usr/bin:/bin", 1);
        return text + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, kNoToolRuns + "\n" + KindAnswer());
}

struct LibraryPath {
    const char* name;
    const char* ofHost;  // null: not set
    const char* ofTool;
};
class LibraryPathTest : public UnkindHostTest, public testing::WithParamInterface<LibraryPath> {};

TEST_P(LibraryPathTest, OfTheToolEndsWithItsLibrariesAndTheHostKeepsItsOwn) {
    const std::string seen = InHost([](Host& host) {
        const char* const before = GetParam().ofHost;
        if (before == nullptr) {
            ::unsetenv("LD_LIBRARY_PATH");
        } else {
            ::setenv("LD_LIBRARY_PATH", before, 1);
        }
        const StandIn& standIn = host.UseStandIn();
        standIn.TakeNotes();
        const std::string text = host.Ask();
        EXPECT_THAT(standIn.Notes(), Each(Field(&StandIn::Note::libraryPath, GetParam().ofTool)));
        EXPECT_FALSE(standIn.Notes().empty());
        EXPECT_STREQ(::getenv("LD_LIBRARY_PATH"), before);
        return text;
    });
    EXPECT_EQ(seen, KindAnswer());
}

INSTANTIATE_TEST_SUITE_P(All, LibraryPathTest,
                         testing::Values(LibraryPath{"NotSet", nullptr, "/opt/zorbalt/vdk/lib"},
                                         LibraryPath{"Empty", "", ":/opt/zorbalt/vdk/lib"},
                                         LibraryPath{"Set", "/usr/local/lib:/srv/lib",
                                                     "/usr/local/lib:/srv/lib:/opt/zorbalt/vdk/lib"}),
                         [](const auto& path) { return path.param.name; });

class UmaskTest : public UnkindHostTest, public testing::WithParamInterface<mode_t> {};

TEST_P(UmaskTest, IsNoMatterAsLongAsTheHostMayReadItsFiles) {
    if (!OrdinaryUserMayLook()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const std::string seen = InHost([](Host& host) {
        host.UseStandIn();
        BecomeOrdinary();
        ::umask(GetParam());
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

INSTANTIATE_TEST_SUITE_P(All, UmaskTest, testing::Values(0000, 0022, 0027, 0077));

TEST_F(EnvironmentTest, WithFilesThatTheHostMayNotReadACallFailsWithItsReason) {
    if (!OrdinaryUserMayLook()) {
        GTEST_SKIP() << "the build tree is closed to ordinary users";
    }
    const std::string seen = InHost([](Host& host) {
        host.UseStandIn();
        BecomeOrdinary();
        const std::string kind = host.Ask();
        ::umask(0777);
        const std::string text = host.Ask();
        ::umask(0022);
        EXPECT_EQ(host.Ask(), kind);
        return text;
    });
    const std::string failed = "status 00000000, return value 80000001, MSGID_MNGSRV_RAID_0001_F 04";
    EXPECT_EQ(seen, failed + "\n" + failed);
}

TEST_F(EnvironmentTest, AWorkingDirectoryThatIsGoneDoesNotShowInTheDocument) {
    const std::string seen = InHost([this](Host& host) {
        const fs::path folder = m_Root.Path() / "working";
        fs::create_directory(folder);
        fs::current_path(folder);
        fs::remove(folder);
        return host.Ask();
    });
    EXPECT_EQ(seen, KindAnswer());
}

}  // namespace
}  // namespace unkindhost
