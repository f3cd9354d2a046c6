#include "Tool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace vdksim::test {

namespace fs = std::filesystem;

int Ended::ExitStatus() const {
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

int Ended::Signal() const {
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

Tool& Tool::WithState(const fs::path& folder) {
    m_State = folder;
    return *this;
}

Tool& Tool::WithProgram(const fs::path& program) {
    m_Program = program;
    return *this;
}

Tool& Tool::WithoutVariables() {
    m_SetVariables = false;
    return *this;
}

Ended Tool::Run(const std::string& arguments) const {
    const TempFolder captured;
    const auto open = [&](const char* name) {
        return ::open((captured.Path() / name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    };
    const int out = open("out");
    const int err = open("err");
    const pid_t child = Start(arguments, out, err);
    Ended ended;
    EXPECT_EQ(::waitpid(child, &ended.status, 0), child);
    ::close(out);
    ::close(err);
    ended.out = captured.Read("out");
    ended.err = captured.Read("err");
    return ended;
}

pid_t Tool::Start(const std::string& arguments, int output, int error) const {
    std::istringstream in(arguments);
    std::vector<std::string> words{m_Program.string()};
    words.insert(words.end(), std::istream_iterator<std::string>(in), std::istream_iterator<std::string>());
    std::vector<std::string> variables;
    if (m_SetVariables) {
        variables = {"VDKSIM_SCENARIO=" + m_Scenario.string(),
                     "VDKSIM_STATE=" + m_State.value_or(m_Scenario / "no-such-folder").string()};
    }
    const auto pointers = [](std::vector<std::string>& texts) {
        std::vector<char*> list;
        for (std::string& text : texts) {
            list.push_back(text.data());
        }
        list.push_back(nullptr);
        return list;
    };
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    pid_t child = -1;
    const int failure = ::posix_spawn(&child, m_Program.c_str(), &actions, nullptr, pointers(words).data(),
                                      pointers(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(failure, 0) << m_Program;
    return child;
}

}  // namespace vdksim::test
