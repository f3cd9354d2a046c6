#pragma once

#include "Client.h"
#include "basics/Processes.h"
#include "test_support/Command.h"
#include "test_support/Processes.h"
#include "test_support/Waiting.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace doors::test {

/// Whether or not anybody has waited for it.
inline bool HasEnded(pid_t process) {
    const char state = testsupport::Look(process).state;
    return state == '\0' || state == 'Z';
}

/// The service with its doors, on a made-up server.
class Doors : public testing::Test {
  protected:
    void Start(const std::string& scenario, const std::string& more = "") {
        Begin(scenario, more);
        ASSERT_TRUE(testsupport::ComesTrue([&] { return StatusOf(Get("/healthz")) == 200; }));
    }
    void Begin(const std::string& scenario, const std::string& more = "") {
        m_Folder.Write("service.toml", "interval = \"1d\"\nsmart_interval = \"0\"\nlisten = [\"unix:" +
                                           Socket() + "\"" + m_Listen + "]\n" + more);
        m_Service = testsupport::Command{.words = {"--config", m_Folder / "service.toml", "--scenario",
                                                   scenario, "--history", m_Folder / "history.db"},
                                         .environment = m_Environment,
                                         .inChild = m_InService,
                                         .program = DOORS_TEST_SERVICE}
                        .Start();
    }
    ~Doors() override {
        if (m_Service) {
            ::kill(m_Service->Process(), SIGTERM);
            m_Said = m_Service->Wait().err;
        }
        EXPECT_FALSE(m_Said.find("signal 31") != std::string::npos) << m_Said;
    }
    [[nodiscard]] std::string Socket() const { return m_Folder / "socket"; }
    [[nodiscard]] std::string Get(const std::string& path, const std::string& headers = "") const {
        Client client(Socket());
        return client.IsConnected() ? client.Get(path, headers) : "";
    }
    [[nodiscard]] pid_t ProcessOfDoors() const {
        for (const pid_t child : basics::ChildrenOf(m_Service->Process())) {
            if (testsupport::ReadFile("/proc/" + std::to_string(child) + "/cmdline")
                    .find("mngsrvraid-doors") != std::string::npos) {
                return child;
            }
        }
        return -1;
    }

    testsupport::TempFolder m_Folder;
    std::string m_Listen;  ///< further addresses
    std::map<std::string, std::string> m_Environment;
    std::function<void()> m_InService = [] {};  ///< what the process does before it is the service
    std::unique_ptr<testsupport::Running> m_Service;
    std::string m_Said;
};

}  // namespace doors::test
