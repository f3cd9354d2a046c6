#include "UnkindHostTest.h"

#include "Remains.h"
#include "sandbox/Sandbox.h"
#include "test_support/InChild.h"

#include <grp.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace unkindhost {

std::string Host::Ask() {
    m_Trace.Clear();
    const std::string all = WithReason(m_Provider.GetInfo());
    m_Trace.Clear();
    return all + "\n" + WithReason(m_Provider.GetPDInfo());
}

std::string Host::WithReason(const std::string& answer) {
    std::string text = answer;
    for (const std::string& message : m_Trace.Texts(0)) {
        text += ", " + message;
    }
    return text;
}

const std::string UnkindHostTest::kNoToolRuns =
    "status 00000000, return value 000000a1, MSGID_MNGSRV_RAID_0001_F 01\n"
    "status 00000000, return value 000000a1, MSGID_MNGSRV_RAID_0001_F 01";

UnkindHostTest::UnkindHostTest() {
    fs::create_directory_symlink(UNKIND_HOST_CIM, m_Root.Path() / "cim");
    fs::permissions(m_Root.Path(), fs::perms::all);  // Also for an ordinary user.
    ::setenv("ZORBALT_INSTALL_DIR", m_Root.Path().c_str(), 1);
}

UnkindHostTest::~UnkindHostTest() {
    ::unsetenv("ZORBALT_INSTALL_DIR");
}

std::string UnkindHostTest::InHost(const std::function<std::string(Host&)>& work) const {
    return testsupport::InChild([&] {
        const bool hadFailure = HasFailure();
        Host host(m_Root.Path());
        const std::set<int> before = OpenDescriptors();
        const std::string text = work(host);
        return text + Remains(before, m_Root.Path()) +
               (HasFailure() && !hadFailure ? "\nan expectation failed" : "");
    });
}

std::string UnkindHostTest::KindAnswer() const {
    return InHost([](Host& host) { return host.Ask(); });
}

void UnkindHostTest::BecomeOrdinary() {
    constexpr uid_t kNobody = 65534;
    if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, kNobody) != 0 ||
                             ::setresuid(kNobody, kNobody, kNobody) != 0)) {
        throw std::system_error(errno, std::generic_category(), "cannot become an ordinary user");
    }
}

bool UnkindHostTest::OrdinaryUserMayLook() {
    return testsupport::InChild([] {
               BecomeOrdinary();
               const bool may = ::access(UNKIND_HOST_CIM "/libqel_MngSrv_QelLib.so", R_OK) == 0 &&
                                ::access(UNKIND_HOST_SHELL_FOLDER "/sh", X_OK) == 0;
               return std::string(may ? "yes" : "no");
           }) == "yes";
}

TEST_F(UnkindHostTest, AKindHostGetsTwoDocuments) {
    const std::string answer = KindAnswer();
    EXPECT_THAT(answer, testing::StartsWith("<?xml"));
    EXPECT_THAT(answer, testing::HasSubstr("</RAID>\n\n<?xml"));
    EXPECT_THAT(answer, testing::EndsWith("</RAID>\n"));
    EXPECT_THAT(answer, testing::HasSubstr("SMART Detail(SAS)"));
}

TEST_F(UnkindHostTest, TheStandInAnswersAsTheSimulatorDoes) {
    EXPECT_EQ(InHost([](Host& host) {
                  host.UseStandIn();
                  return host.Ask();
              }),
              KindAnswer());
}

}  // namespace unkindhost

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests)) {
        sandbox::EnterSandbox(UNKIND_HOST_SIMULATOR, UNKIND_HOST_SCENARIO);
        // Also for an ordinary user's host.
        fs::permissions("/opt/zorbalt/vdk/state", fs::perms::all);
    }
    return RUN_ALL_TESTS();
}
