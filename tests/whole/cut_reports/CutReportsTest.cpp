// A report that is cut short, behind any of its lines: a full disk, a tool that dies and says that it is
// well. The server is unknown then, unless the document has nothing that could tell.

#include "LoadedProvider.h"
#include "inventory/Snapshot.h"
#include "sandbox/Sandbox.h"
#include "test_support/InChild.h"
#include "test_support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace cutreports {
namespace {

using testsupport::TempFolder;

struct WellServer {
    const char* scenario;
    std::vector<const char*> commands;
};

std::string KeyOf(const std::string& line) {
    const std::size_t start = line.find_first_not_of(' ');
    const std::string text = start == std::string::npos ? "" : line.substr(start, line.find(" :") - start);
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// The tool's reports, which a cheap shell hands out, each as a file named after its command.
class Reports final {
  public:
    Reports(const TempFolder& root, const WellServer& server) : m_Folder(root.Path()) {
        sandbox::EnterSandbox(UNKIND_HOST_SIMULATOR,
                              std::string(CUT_REPORTS_SCENARIOS) + "/" + server.scenario);
        for (const std::string command : server.commands) {
            const std::string line =
                "/opt/zorbalt/vdk/cli/vdkcli " + command + " >'" + (m_Folder / command) + "'";
            if (std::system(line.c_str()) != 0) {  // NOLINT(cert-env33-c): words of our own
                throw std::runtime_error("the simulator refuses " + command);
            }
        }
        ::setenv("PATH", UNKIND_HOST_SHELL_FOLDER, 1);
        ::setenv("STANDIN_REPORTS", m_Folder.Path().c_str(), 1);
    }

    [[nodiscard]] std::string Read(const std::string& command) const { return m_Folder.Read(command); }
    void Write(const std::string& command, const std::string& text) const { m_Folder.Write(command, text); }

  private:
    TempFolder m_Folder;
};

bool IsWell(const std::string& answer) {
    return answer.starts_with("<?xml") &&
           inventory::Snapshot(inventory::Document::Read(answer)).TheHealth().level == inventory::Level::Ok;
}

/// What may be lost while the server stays well: the first lost line of each such cut, by command. Cuts that
/// change nothing in the document are left out.
std::string UnseenCuts(const TempFolder& root, const WellServer& server) {
    std::filesystem::create_directory_symlink(UNKIND_HOST_CIM, root.Path() / "cim");
    ::setenv("ZORBALT_INSTALL_DIR", root.Path().c_str(), 1);
    const Reports reports(root, server);
    const unkindhost::LoadedProvider provider;
    const std::string whole = provider.GetInfo();
    if (!IsWell(whole)) {
        return "it is not well: " + whole;
    }
    std::string unseen;
    for (const std::string command : server.commands) {
        const std::string text = reports.Read(command);
        std::istringstream lines(text);
        std::string kept;
        std::string last = whole;
        for (std::string line; std::getline(lines, line);) {
            reports.Write(command, kept);
            kept += line + "\n";
            const std::string answer = provider.GetInfo();
            if (answer != whole && answer != last && IsWell(answer)) {
                unseen += command + ": " + KeyOf(line) + "\n";
            }
            last = answer;
        }
        reports.Write(command, text);
    }
    return unseen;
}

std::string UnseenCutsOf(const WellServer& server) {
    const TempFolder root;
    return testsupport::InChild([&] { return UnseenCuts(root, server); });
}

// Settings differ from one firmware to the next, and so do the names of enclosures. Behind a drive that is
// told to its end, drives that no group names may be missing, and behind a controller others.
constexpr const char* kSettings[] = {"Patrol Read Rate",
                                     "Patrol Read",
                                     "Patrol Read Schedule",
                                     "Consistency Check Rate",
                                     "Reconstruction Rate",
                                     "BGI Rate",
                                     "Copyback",
                                     "HDD Power Saving",
                                     "Buzzer"};
constexpr const char* kFewerSettings[] = {"Patrol Read Rate",    "Patrol Read",      "Consistency Check Rate",
                                          "Reconstruction Rate", "HDD Power Saving", "Buzzer"};
constexpr const char* kGroupSettings[] = {"Write Policy", "IO Policy", "Disk Cache",
                                          "Background Initialization"};
constexpr const char* kDriveEnd[] = {"Enclosure Vendor", "Enclosure Product ID", "Enclosure Position"};

template <typename Keys>
std::string Cuts(const std::string& command, const Keys& keys) {
    std::string cuts;
    for (const std::string key : keys) {
        cuts += command + ": " + key + "\n";
    }
    return cuts;
}

// The last drive but one, which a group names; the spare behind it; and that one's own end.
std::string CutsOfDrives(const std::string& command) {
    return Cuts(command, kDriveEnd) + command + ": \n" + Cuts(command, kDriveEnd);
}

TEST(CutReports, OfASmallServerAreSeenWhereverAnythingIsJudged) {
    EXPECT_EQ(
        UnseenCutsOf({"small", {"-v", "-ctrlinfo -aAll", "-ctrlinfo -a0", "-ldpdinfo -a0", "-pdinfo -a0"}}),
        Cuts("-ctrlinfo -a0", kFewerSettings) + Cuts("-ldpdinfo -a0", kGroupSettings) +
            CutsOfDrives("-pdinfo -a0"));
}

TEST(CutReports, OfAStorageServerAreSeenWhereverAnythingIsJudged) {
    const std::string seen =
        UnseenCutsOf({"well",
                      {"-v", "-ctrlinfo -aAll", "-ctrlinfo -a0", "-ldpdinfo -a0", "-pdinfo -nosmart -a0",
                       "-ctrlinfo -a1", "-ldpdinfo -a1", "-pdinfo -nosmart -a1"}});
    EXPECT_EQ(seen, "-ctrlinfo -aAll: \n" + Cuts("-ctrlinfo -a0", kSettings) +
                        Cuts("-ldpdinfo -a0", kGroupSettings) + CutsOfDrives("-pdinfo -nosmart -a0") +
                        Cuts("-ctrlinfo -a1", kFewerSettings) + Cuts("-ldpdinfo -a1", kGroupSettings) +
                        CutsOfDrives("-pdinfo -nosmart -a1"));
}

}  // namespace
}  // namespace cutreports
