#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>
#include <vector>

namespace redfish::test {

/// The program of Server.cpp with these words, which serves documents to clients that are programs; it ends
/// with this.
class RunningServer final {
  public:
    /// `documents` of the words are documents; each gets a port.
    RunningServer(std::vector<std::string> words, std::size_t documents) {
        std::array<int, 2> in = {}, out = {};
        EXPECT_EQ(::pipe2(in.data(), O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
        words.insert(words.begin(), REDFISH_TEST_SERVER);
        std::vector<char*> arguments;
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        m_Process = ::fork();
        if (m_Process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            ::execv(REDFISH_TEST_SERVER, arguments.data());
            ::_exit(1);
        }
        ::close(in[0]);
        ::close(out[1]);
        m_In = in[1];
        ReadPorts(out[0], documents);
        ::close(out[0]);
    }
    RunningServer(const RunningServer&) = delete;
    RunningServer& operator=(const RunningServer&) = delete;
    ~RunningServer() {
        ::close(m_In);
        int status = 0;
        ::waitpid(m_Process, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the server ended with " << status;
    }

    /// "127.0.0.1:41234"
    [[nodiscard]] std::string Host(std::size_t document = 0) const {
        return "127.0.0.1:" + (document < m_Ports.size() ? m_Ports[document] : "1");
    }
    [[nodiscard]] std::string Url(std::size_t document = 0) const { return "http://" + Host(document); }

  private:
    void ReadPorts(int from, std::size_t documents) {
        std::string text;
        std::array<char, 4096> bytes = {};
        while (static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) < documents) {
            const ssize_t size = ::read(from, bytes.data(), bytes.size());
            if (size <= 0) {
                break;
            }
            text.append(bytes.data(), static_cast<std::size_t>(size));
        }
        std::istringstream lines(text);
        for (std::string port, document; lines >> port >> document;) {
            m_Ports.push_back(port);
        }
        EXPECT_EQ(m_Ports.size(), documents) << "the server does not start";
    }

    pid_t m_Process = -1;
    int m_In = -1;
    std::vector<std::string> m_Ports;
};

}  // namespace redfish::test
