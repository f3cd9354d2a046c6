#pragma once

#include "test_support/Command.h"
#include "test_support/Waiting.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>

#include <memory>
#include <string>

namespace doors::test {

/// The service watching a scenario, for clients that know nothing but the network of this machine.
class OnLoopback : public testing::Test {
  protected:
    void Start(const std::string& scenario) {
        m_Port = std::to_string(FreePort());
        m_Folder.Write("service.toml", "interval = \"1d\"\nsmart_interval = \"0\"\nlisten = [\"127.0.0.1:" +
                                           m_Port + "\"]\n");
        m_Service = testsupport::Command{.words = {"--config", m_Folder / "service.toml", "--scenario",
                                                   scenario, "--history", m_Folder / "history.db"},
                                         .program = DOORS_TEST_SERVICE}
                        .Start();
        ASSERT_TRUE(testsupport::ComesTrue([&] { return Get("/healthz").ExitStatus() == 0; }));
    }
    ~OnLoopback() override {
        if (m_Service) {
            ::kill(m_Service->Process(), SIGTERM);
            (void)m_Service->Wait();
        }
    }
    [[nodiscard]] std::string Url(const std::string& path) const {
        return "http://127.0.0.1:" + m_Port + path;
    }
    /// Fails for answers that are errors.
    [[nodiscard]] testsupport::Ended Get(const std::string& path) const {
        return testsupport::Command{.words = {"-sS", "--fail", "-m", "60", Url(path)},
                                    .program = "/usr/bin/curl"}
            .Run();
    }

    testsupport::TempFolder m_Folder;
    std::unique_ptr<testsupport::Running> m_Service;
    std::string m_Port;

    /// One that nobody had a moment ago.
    [[nodiscard]] static std::uint16_t FreePort() {
        const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof place;
        EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&place), size), 0);
        EXPECT_EQ(::getsockname(socket, reinterpret_cast<sockaddr*>(&place), &size), 0);
        ::close(socket);
        return ::ntohs(place.sin_port);
    }
};

}  // namespace doors::test
