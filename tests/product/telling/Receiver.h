#pragma once

#include "test_support/TempFolder.h"
#include "test_support/Waiting.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace telling::test {

/// receiver.py, which takes what channels send and keeps it; it ends with this.
class Receiver final {
  public:
    Receiver() : m_Process(::fork()) {
        if (m_Process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
            ::execl("/usr/bin/python3", "python3", "-W", "ignore", TELLING_TEST_RECEIVER,
                    m_Folder.Path().c_str(), nullptr);
            ::_exit(1);
        }
        EXPECT_TRUE(testsupport::ComesTrue([this] {
            return std::filesystem::exists(m_Folder / "ports") || ::waitpid(m_Process, nullptr, WNOHANG) != 0;
        }));
        std::istringstream lines(m_Folder.Read("ports"));
        for (std::string name, port; lines >> name >> port;) {
            m_Ports[name] = port;
        }
        EXPECT_FALSE(m_Ports.empty()) << "the receiver does not start";
    }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;
    ~Receiver() {
        ::kill(m_Process, SIGKILL);
        ::waitpid(m_Process, nullptr, 0);
    }

    [[nodiscard]] std::string Port(const std::string& name) const { return m_Ports.at(name); }

    /// Where a path is served without TLS.
    [[nodiscard]] std::string Plain(const std::string& path) const {
        return "http://127.0.0.1:" + Port("http") + path;
    }

    /// Where it is served with that certificate.
    [[nodiscard]] std::string Secure(const std::string& certificate) const {
        return "https://localhost:" + Port(certificate) + "/ok";
    }

    /// Of those who signed most of the certificates.
    [[nodiscard]] std::string Authority() const { return m_Folder / "authority.crt"; }

    void Set(const std::string& mark) const { m_Folder.Write(mark, ""); }
    void Unset(const std::string& mark) const { std::filesystem::remove(m_Folder / mark); }

    [[nodiscard]] std::vector<nlohmann::json> Requests() const { return Notes("requests"); }
    [[nodiscard]] std::vector<nlohmann::json> Mails() const { return Notes("mails"); }

  private:
    [[nodiscard]] std::vector<nlohmann::json> Notes(const std::string& name) const {
        std::vector<nlohmann::json> notes;
        std::istringstream lines(m_Folder.Read(name));
        for (std::string line; std::getline(lines, line);) {
            notes.push_back(nlohmann::json::parse(line, nullptr, false));
        }
        return notes;
    }

    testsupport::TempFolder m_Folder;
    pid_t m_Process;
    std::map<std::string, std::string> m_Ports;
};

}  // namespace telling::test
