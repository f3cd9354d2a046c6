#pragma once

#include "redfish/Accounts.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace redfish::test {

/// Accounts in memory, with passwords as they are. Tokens are no secrets: they count up.
class KnownAccounts final : public Accounts {
  public:
    explicit KnownAccounts(std::map<std::string, std::string> passwords = {{"monitoring", "secret"}})
        : m_Passwords(std::move(passwords)) {}

    std::size_t mostSessions = 4;
    std::chrono::seconds wait{0};  ///< above 0: nobody is let in now

    [[nodiscard]] std::variant<NewSession, SessionRefusal> Create(const std::string& account,
                                                                  const std::string& password) override {
        using Why = SessionRefusal::Why;
        const std::lock_guard lock(m_Mutex);
        if (wait.count() > 0) {
            return SessionRefusal{Why::NotNow, wait};
        }
        if (!IsProved(account, password)) {
            return SessionRefusal{Why::NotProved};
        }
        if (m_Sessions.size() >= mostSessions) {
            return SessionRefusal{Why::TooMany};
        }
        const std::string number = std::to_string(++m_Count);
        const NewSession made{{"s" + number, account, std::chrono::system_clock::time_point()},
                              "token-" + number};
        m_Sessions.emplace(made.token, made.session);
        return made;
    }

    [[nodiscard]] bool End(const std::string& id) override {
        const std::lock_guard lock(m_Mutex);
        return std::erase_if(m_Sessions, [&](const auto& each) { return each.second.id == id; }) > 0;
    }

    [[nodiscard]] std::vector<Session> List() const override {
        const std::lock_guard lock(m_Mutex);
        std::vector<Session> sessions;
        for (const auto& [token, session] : m_Sessions) {
            sessions.push_back(session);
        }
        return sessions;
    }

    [[nodiscard]] std::optional<std::string> WhoIs(const std::string& token) const {
        const std::lock_guard lock(m_Mutex);
        const auto found = m_Sessions.find(token);
        return found == m_Sessions.end() ? std::nullopt : std::optional(found->second.account);
    }

    [[nodiscard]] bool IsProved(const std::string& account, const std::string& password) const {
        const auto found = m_Passwords.find(account);
        return found != m_Passwords.end() && found->second == password;
    }

  private:
    const std::map<std::string, std::string> m_Passwords;
    mutable std::mutex m_Mutex;
    std::map<std::string, Session> m_Sessions;
    std::size_t m_Count = 0;
};

}  // namespace redfish::test
