// docs/host.md: its example, its table of failures, and the commands that it gives.

#include "Markdown.h"
#include "sandbox/Sandbox.h"
#include "test_support/Command.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace docs::test {
namespace {

using namespace testsupport;

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const fs::path kSources = COMMAND_TEST_SOURCES;
const fs::path kScenarios = COMMAND_TEST_SCENARIOS;

const std::string kDocument = "docs/host.md";

void EnterScenario(const char* name) {
    if (name == nullptr) {
        sandbox::EnterSandboxWithoutTool();
    } else {
        sandbox::EnterSandbox(COMMAND_TEST_SIMULATOR, kScenarios / name);
    }
}

std::string RaidDocument() {
    return RunCommand({"--scenario", "small", "get-info"}).out;
}

class SmallHostTest : public testing::Test {
  protected:
    static constexpr const char* kModule = "libqelp_ZORBALT_MngSrvRaid.so";

    /// The example, asking the scenario; null: a server without the tool.
    [[nodiscard]] Ended Run(const char* scenario) const {
        return Command{.words = {},
                       .environment = {{"ZORBALT_INSTALL_DIR", m_Root.Path()}, {"FAKE_MODULE", "throw"}},
                       .inChild = [=] { EnterScenario(scenario); },
                       .program = DOCS_TEST_HOST}
            .Run();
    }
    void Replace(const std::string& file, const fs::path& by) const {
        fs::remove(m_Root.Cim() / file);
        fs::create_symlink(by, m_Root.Cim() / file);
    }

    InstallRoot m_Root;
};

TEST_F(SmallHostTest, StandsInTheDocumentAsItIs) {
    EXPECT_EQ(Blocks(DocumentText(kDocument), "cpp"),
              std::vector{ReadFile(kSources / "docs" / "examples" / "small_host.cpp")});
}

TEST_F(SmallHostTest, PrintsTheDocumentOfTheServer) {
    const Ended ended = Run("small");
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, StartsWith("<?xml"));
    EXPECT_EQ(ended.out, RaidDocument());
    EXPECT_THAT(m_Root.ResultFiles(), IsEmpty());
}

TEST_F(SmallHostTest, SaysWhyThereIsNoProvider) {
    const std::string start = "small_host: " + (m_Root.Cim() / kModule).string();
    Replace(kModule, "nowhere");
    EXPECT_EQ(Run("small").err, start + ": cannot open shared object file: No such file or directory\n");
    Replace(kModule, COMMAND_TEST_CONVERSION_LIBRARY);
    const Ended ended = Run("small");
    EXPECT_EQ(ended.err, start + ": undefined symbol: create\n");
    EXPECT_EQ(ended.ExitStatus(), 3);
}

TEST_F(SmallHostTest, SaysWhatTheModuleHasThrownBeforeItClosesTheModule) {
    m_Root.UseFakeModule();
    const Ended ended = Run("small");
    EXPECT_EQ(ended.err, "small_host: out of\ncheese\n");
    EXPECT_EQ(ended.ExitStatus(), 3);
}

struct Failure {
    const char* name;
    const char* scenario;
    const char* key;      // null: none is configured
    const char* library;  // null: the built one
    int exitStatus;
    const char* line;
    const char* row;  // how the table's row begins
};
class FailureTest : public SmallHostTest, public testing::WithParamInterface<Failure> {};

TEST_P(FailureTest, IsToldByTheHostAndExplainedInTheTable) {
    if (GetParam().key != nullptr) {
        m_Root.SetKey(GetParam().key);
    }
    if (GetParam().library != nullptr) {
        Replace("libqel_MngSrv_QelLib.so", GetParam().library);
    }
    const Ended ended = Run(GetParam().scenario);
    EXPECT_EQ(ended.out, "");
    EXPECT_EQ(ended.err, "GetInfo failed with " + std::string(GetParam().line) + "\n");
    EXPECT_EQ(ended.ExitStatus(), GetParam().exitStatus);
    EXPECT_THAT(DocumentText(kDocument), HasSubstr("\n" + std::string(GetParam().row)));
}

INSTANTIATE_TEST_SUITE_P(All, FailureTest,
                         testing::Values(Failure{"NoTool", nullptr, "sesame", nullptr, 1,
                                                 "0x000000a0, reason 03", "| 0 | 0x000000A0 | 03 |"},
                                         Failure{"NoKey", "small", "sesame", nullptr, 1,
                                                 "0x00000011, reason 07", "| 0 | 0x00000011 | 07 |"},
                                         Failure{"ToolFails", "faults/marker", nullptr, nullptr, 1,
                                                 "0x000000a1, reason 01", "| 0 | 0x000000A1 | 01 |"},
                                         Failure{"NoLibrary", "small", nullptr, "nowhere", 1,
                                                 "0x80000001, reason 05", "| 0 | 0x80000001 | 05 |"},
                                         Failure{"OddReport", "faults/truncated-title", nullptr, nullptr, 1,
                                                 "0x80000001, reason 06", "| 0 | 0x80000001 | 06 |"},
                                         Failure{"Exception", "faults/bare-version", nullptr, nullptr, 2,
                                                 "status 0x80041001, reason --",
                                                 "| 0x80041001 | 0x80000002 | none |"}),
                         [](const auto& failure) { return failure.param.name; });

// One behind the other, in this checkout, but from this build to an installation of their own.
TEST(HostCommandsTest, BuildTheHostAgainstAnInstallationAndShowADocument) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the commands build a host without sanitizers, which cannot load what has them";
#endif
    const std::vector<std::string> blocks = Blocks(DocumentText(kDocument), "sh");
    ASSERT_THAT(blocks, SizeIs(2));
    const TempFolder folder;
    std::string build = Replaced(blocks[0], "DIR=/usr/local/zorbalt\n", "DIR='" + folder / "root" + "'\n");
    build = Replaced(build, "--install build/release ", "--install '" DOCS_TEST_BUILD "' ");
    build = Replaced(build, "--prefix \"$DIR\"\n", "--prefix \"$DIR\" >/dev/null\n");
    const std::string show =
        ::geteuid() == 0 ? blocks[1] : Replaced(blocks[1], "--mount", "--mount --map-root-user");
    const Command command{
        .words = {"-euc", build + show}, .inChild = [] { fs::current_path(kSources); }, .program = "/bin/sh"};
    const Ended ended = command.Run();
    EXPECT_EQ(ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
    EXPECT_THAT(ended.out, StartsWith("<?xml"));
    EXPECT_EQ(ended.out, RaidDocument());
}

}  // namespace
}  // namespace docs::test
