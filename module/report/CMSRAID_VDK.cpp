#include "report/CMSRAID_VDK.h"

#include "ChildEnvironment.h"
#include "ResultFile.h"
#include "itemconv/MsraidTrace.h"

#include "qel/CFileUtility.h"
#include "qel/QelWindows.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

using msraid::kCategory;
using msraid::kFailure;
using msraid::kResult;

namespace {

constexpr const char* kToolFile = "/opt/zorbalt/vdk/cli/vdkcli";
constexpr const char* kToolDirectory = "/opt/zorbalt/vdk/cli/";
constexpr const char* kToolLibraryDirectory = "/opt/zorbalt/vdk/lib";

constexpr std::string_view kInvalidInput = "Error - Invalid input at or near token";
constexpr int kLastAttempt = 2;
constexpr DWORD kPauseMilliseconds = 1000;

constexpr const char* kVersionCommand = "vdkcli -v";
constexpr const char* kVersionKey = "Product Version";

bool IsRejectedByTool(const std::string& resultFilePath) {
    std::ifstream file = OpenReport(resultFilePath);
    std::array<char, kInvalidInput.size()> start{};
    file.read(start.data(), start.size());
    return std::string_view(start.data(), static_cast<std::size_t>(file.gcount())) == kInvalidInput;
}

[[noreturn]] void FailInChild(const char* call) noexcept {
    const auto error = static_cast<unsigned>(GetLastError());
    msraid::LoseFailure([&] {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ExecForeignModule %s Error %08x.", call, error);
    });
    // Not exit(): what the parent had buffered, and its exit handlers, are the parent's.
    ::_exit(1);
}

// A shell in a directory that is gone complains, and the report would begin with its complaint.
void LeaveDeletedDirectory() noexcept {
    std::array<char, 1> tooShort{};
    if (::getcwd(tooShort.data(), tooShort.size()) == nullptr && errno == ENOENT) {
        [[maybe_unused]] const int result = ::chdir("/");  // Without a root it complains all the same.
    }
}

// Only what is safe between fork() and exec() in a process with other threads.
[[noreturn]] void BecomeTool(const char* commandLine, const char* resultFilePath,
                             char** environment) noexcept {
    environ = environment;
    constexpr mode_t kModeBeforeUmask = 0666;
    const int file = ::open(resultFilePath, O_WRONLY | O_CREAT | O_TRUNC, kModeBeforeUmask);
    if (file < 0) {
        FailInChild("open");
    }
    const int standardOutput = ::fileno(stdout);
    if (::dup2(file, standardOutput) < 0) {
        FailInChild("dup2");
    }
    if (file != standardOutput) {  // The same where the host had closed its own.
        ::close(file);
    }
    if (::dup2(standardOutput, ::fileno(stderr)) < 0) {
        FailInChild("dup2");
    }
    LeaveDeletedDirectory();
    ::execlp("sh", "sh", "-c", commandLine, static_cast<char*>(nullptr));
    FailInChild("execlp");
}

// What waitpid() says once it is not merely interrupted.
pid_t WaitFor(pid_t child, int& status) noexcept {
    pid_t result = -1;
    do {
        result = ::waitpid(child, &status, WUNTRACED | WCONTINUED);
    } while (result == -1 && errno == EINTR);
    return result;
}

std::string ReadVersion(std::ifstream& file) {
    std::string line;
    while (std::getline(file, line)) {
        if (line.find(kVersionKey) == std::string::npos) {
            continue;
        }
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos) {
            return "";
        }
        // Meant: the character behind the colon is skipped whatever it is, and a colon that ends the line is
        // an error that the caller gets by exception.
        std::string version = line.substr(colon + 2);
        version.erase(version.find_last_not_of(" \t\r\n") + 1);
        return version;
    }
    return "";
}

}  // namespace

bool CMSRAID_VDK::IsVDKInstalled() {
    return CFileUtility::IsFileExist(kToolFile);
}

bool CMSRAID_VDK::ExecCli(std::string command, std::string resultFilePath) {
    if (!IsVDKInstalled()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "VDK is not installed.");
        return false;
    }
    CTraceUtility::WriteDebug(kCategory, kResult, "execute vdkcli command.(%s)", command.c_str());
    const std::string commandLine = kToolDirectory + command;
    for (int attempt = 0; ExecForeignModule(commandLine, resultFilePath); ++attempt) {
        if (IsRejectedByTool(resultFilePath) || attempt == kLastAttempt) {
            CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to execute vdkcli command.(%s)",
                                      command.c_str());
            return false;
        }
        Sleep(kPauseMilliseconds);
    }
    return true;
}

bool CMSRAID_VDK::ExecForeignModule(const std::string& commandLine, const std::string& resultFilePath) {
    // A pipe, which only an earlier run can have put there, would keep the child in open() for ever.
    if (commandLine.empty() || resultFilePath.empty() || IsPipe(resultFilePath)) {
        return true;
    }
    ChildEnvironment environment(kToolLibraryDirectory);
    const pid_t child = ::fork();
    if (child < 0) {
        return true;
    }
    if (child == 0) {
        BecomeTool(commandLine.c_str(), resultFilePath.c_str(), environment.Entries());
    }
    int status = 0;
    if (WaitFor(child, status) == -1) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ExecForeignModule waitpid Error.");
        return true;
    }
    if (!WIFEXITED(status)) {  // Ended by a signal, stopped or continued: failed, and not waited for again.
        CTraceUtility::WriteDebug(kCategory, kFailure, "ExecForeignModule WEXITSTATUS Error %08x.",
                                  static_cast<unsigned>(status));
        return true;
    }
    return WEXITSTATUS(status) != 0;
}

std::string CMSRAID_VDK::GetVDKVersion(std::string resultFilePath) {
    ResultFile resultFile(std::move(resultFilePath));
    std::string version;
    if (ExecCli(kVersionCommand, resultFile.Path())) {
        std::ifstream file = OpenReport(resultFile.Path());
        try {
            version = ReadVersion(file);
        } catch (const std::out_of_range&) {
            resultFile.Keep();  // Meant: only a colon that ends the line leaves the file on disk.
            throw;
        }
    }
    resultFile.Delete();
    return version;
}
