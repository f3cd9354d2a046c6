// scripts/demo.sh serve, and what it tells people to type.

#include "OnLoopback.h"
#include "test_support/Pattern.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

namespace doors::test {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

class Demo : public OnLoopback {
  protected:
    /// Of the programs that are built; what it writes goes to the test's own folder.
    void Serve(const std::string& scenario) {
        m_Port = std::to_string(FreePort());
        std::filesystem::create_directory_symlink(std::filesystem::path(DOORS_TEST_SERVICE).parent_path(),
                                                  m_Folder / "bin");
        const std::string said = m_Folder / "said";
        m_Service =
            testsupport::Command{.words = {DOORS_TEST_DEMO, "serve", scenario},
                                 .environment = {{"ZORBALT_DEMO_BUILD", m_Folder.Path().string()},
                                                 {"ZORBALT_DEMO_PORT", m_Port}},
                                 .inChild =
                                     [said] {
                                         ::dup2(::open(said.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600),
                                                STDERR_FILENO);
                                     },
                                 .program = "/bin/bash"}
                .Start();
        ASSERT_TRUE(testsupport::ComesTrue(
            [&] { return Said().find("A server that changes") != std::string::npos; }));
    }
    [[nodiscard]] std::string Said() const {
        return std::filesystem::exists(m_Folder / "said") ? testsupport::ReadFile(m_Folder / "said") : "";
    }
};

TEST_F(Demo, TellsWhatToTypeAndThatWorks) {
    Serve("small");
    EXPECT_THAT(Said(), HasSubstr("The made-up server \"small\" is at " + Url("/")));
    const auto lines = testsupport::MatchesIn(Said(), "\n    (curl|wbemcli) ([^\n]+)");
    ASSERT_THAT(lines, SizeIs(6));
    for (const auto& line : lines) {
        const bool isCurl = line.at(1) == "curl";
        if (!isCurl && !std::filesystem::exists("/usr/bin/wbemcli")) {
            continue;
        }
        const std::string typed = (isCurl ? "curl -sS --fail -m 60 " : "wbemcli -nl ") + line.at(2);
        const testsupport::Ended ended =
            testsupport::Command{.words = {"-c", typed}, .program = "/bin/sh"}.Run();
        EXPECT_EQ(ended.ExitStatus(), 0) << typed << '\n' << ended.err;
        EXPECT_NE(ended.out, "") << typed;
    }
    ::kill(m_Service->Process(), SIGTERM);
    EXPECT_EQ(m_Service->Wait().ExitStatus(), 0);
    m_Service.reset();
    EXPECT_NE(Get("/healthz").ExitStatus(), 0) << "nothing answers any more";
}

TEST_F(Demo, SaysThatThereIsNoSuchServer) {
    std::filesystem::create_directory_symlink(std::filesystem::path(DOORS_TEST_SERVICE).parent_path(),
                                              m_Folder / "bin");
    const testsupport::Ended ended =
        testsupport::Command{.words = {DOORS_TEST_DEMO, "serve", "no-such-server"},
                             .environment = {{"ZORBALT_DEMO_BUILD", m_Folder.Path().string()},
                                             {"ZORBALT_DEMO_PORT", std::to_string(FreePort())}},
                             .program = "/bin/bash"}
            .Run();
    EXPECT_EQ(ended.ExitStatus(), 4);
    EXPECT_THAT(ended.err, HasSubstr("no-such-server"));
}

}  // namespace
}  // namespace doors::test
