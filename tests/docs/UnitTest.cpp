// The unit of the service, as it is installed, and what its document says of it.

#include "Markdown.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace docs::test::unit {
namespace {

using namespace testsupport;

using testing::HasSubstr;
using testing::Not;

constexpr const char* kName = "mngsrvraidd.service";

/// An install root with what comes with the service.
class Installed final {
  public:
    Installed() {
        const std::string path = DOCS_TEST_BUILD "/packaging/cmake_install.cmake";
        const Ended ended =
            Command{.words = {"-DCMAKE_INSTALL_PREFIX=" + Root(), "-P", path}, .program = DOCS_TEST_CMAKE}
                .Run();
        EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    }
    [[nodiscard]] std::string Root() const { return m_Folder.Path().string(); }
    [[nodiscard]] std::string Unit() const { return Root() + "/lib/systemd/system/" + kName; }

  private:
    TempFolder m_Folder;
};

TEST(Unit, RunsTheServiceOfItsInstallRoot) {
    const Installed installed;
    const std::string unit = ReadFile(installed.Unit());
    EXPECT_THAT(unit, HasSubstr("\nExecStart=" + installed.Root() + "/bin/mngsrvraidd\n"));
    EXPECT_THAT(unit, Not(HasSubstr("@CMAKE")));
}

#ifdef DOCS_TEST_SYSTEMD_ANALYZE
Ended Analyze(std::vector<std::string> words) {
    return Command{.words = std::move(words), .program = DOCS_TEST_SYSTEMD_ANALYZE}.Run();
}

TEST(Unit, IsUnderstood) {
    const Installed installed;
    std::filesystem::create_directory(installed.Root() + "/bin");
    std::filesystem::copy(DOCS_TEST_BUILD "/bin/mngsrvraidd", installed.Root() + "/bin/mngsrvraidd");
    const Ended ended = Analyze({"verify", "--man=no", installed.Unit()});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.err;
    EXPECT_THAT(ended.err, Not(HasSubstr("mngsrvraidd"))) << "units of this machine may be complained about";
}

TEST(Unit, IsAsExposedAsItsDocumentSays) {
    const Installed installed;
    constexpr const char* kMost = "41";  // tenths
    const Ended ended =
        Analyze({"security", "--offline=true", "--no-pager", "--threshold", kMost, installed.Unit()});
    EXPECT_EQ(ended.ExitStatus(), 0) << ended.out;
    EXPECT_THAT(ended.out, HasSubstr("exposure level for mngsrvraidd.service: 4.1 OK"));
    EXPECT_THAT(
        DocumentText("docs/watch.md"),
        HasSubstr("`systemd-analyze security --offline=true mngsrvraidd.service` comes to 4.1 (OK)."));
}
#endif

}  // namespace
}  // namespace docs::test::unit
