#include "test_support/Command.h"

#include "test_support/Processes.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>

namespace testsupport {

namespace fs = std::filesystem;

namespace {

// A tool that stops itself is left behind, as it would be without a test: it and whatever else a test's
// commands leave become children of the test, which ends them.
class EndOfWhatIsLeft final : public testing::EmptyTestEventListener {
  public:
    EndOfWhatIsLeft() { ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0); }

    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        for (std::vector<Process> left = DescendantsOf(::getpid()); !left.empty();
             left = DescendantsOf(::getpid())) {
            for (const Process& process : left) {
                ::kill(process.id, SIGKILL);
            }
            while (::waitpid(-1, nullptr, 0) > 0) {
            }
        }
    }
};

const bool g_IsListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new EndOfWhatIsLeft);
    return true;
}();

constexpr const char* kModule = "libqelp_ZORBALT_MngSrvRaid.so";
constexpr int kNotStarted = 127;

[[noreturn]] void Become(const Command& command, const std::string& out, const std::string& err) {
    constexpr mode_t kMode = 0600;
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kMode), STDOUT_FILENO);
    ::dup2(::open(err.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kMode), STDERR_FILENO);
    ::unsetenv("ZORBALT_INSTALL_DIR");
    for (const auto& [name, value] : command.environment) {
        ::setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<std::string> words = command.words;
    words.insert(words.begin(), command.program.string());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    try {
        command.inChild();
        ::execv(pointers.front(), pointers.data());
    } catch (const std::exception& error) {
        ::dprintf(STDERR_FILENO, "%s\n", error.what());
    }
    ::_exit(kNotStarted);
}

}  // namespace

int Ended::ExitStatus() const {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::unique_ptr<Running> Command::Start() const {
    auto running = std::make_unique<Running>(standardOutput);
    const TempFolder& captured = running->m_Captured;
    const std::string out = standardOutput.empty() ? captured / "out" : standardOutput;
    running->m_Process = ::fork();
    if (running->m_Process == 0) {
        Become(*this, out, captured / "err");
    }
    return running;
}

Ended Running::Wait() const {
    Ended ended;
    EXPECT_EQ(::waitpid(m_Process, &ended.status, 0), m_Process);
    ended.out = m_Out.empty() ? ReadFile(m_Captured / "out") : "";
    ended.err = ReadFile(m_Captured / "err");
    return ended;
}

Ended RunCommand(std::vector<std::string> words) {
    return Command{.words = std::move(words)}.Run();
}

InstallRoot::InstallRoot() {
    fs::create_directory(Cim());
    fs::create_directory(m_Folder.Path() / "etc");
    for (const fs::path file : {COMMAND_TEST_MODULE, COMMAND_TEST_CONVERSION_LIBRARY}) {
        fs::create_symlink(file, Cim() / file.filename());
    }
    // For tests that run the command as another user, who has no right to write to it.
    fs::permissions(m_Folder.Path(), fs::perms(0755));
}

std::vector<std::string> InstallRoot::ResultFiles() const {
    return TempFolder::NamesIn(m_Folder.Path() / "tmp" / "MSRAID");
}

bool InstallRoot::IsUntouched() const {
    return m_Folder.Names() == std::vector<std::string>{"cim", "etc"};
}

std::string TemporaryDirectory::ResultFolder() const {
    const std::vector<std::string> names = Names();
    return names.empty() ? "" : m_Folder / (names.front() + "/tmp/MSRAID");
}

std::vector<std::string> TemporaryDirectory::ResultFiles() const {
    const std::string folder = ResultFolder();
    std::vector<std::string> files;
    std::error_code error;  // The folder may go while it is looked at.
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        files.push_back(at->path().filename().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void InstallRoot::SetKey(const std::string& key) const {
    WriteFile(m_Folder.Path() / "etc" / "app.key", key + "\n");
}

void InstallRoot::UseFakeModule() const {
    fs::remove(Cim() / kModule);
    fs::create_symlink(COMMAND_TEST_FAKE_MODULE, Cim() / kModule);
}

std::size_t CountLines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

}  // namespace testsupport
