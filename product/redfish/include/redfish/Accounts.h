#pragma once

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace redfish {

/// A client that has proved who it is, and need not do so again for a while.
struct Session {
    std::string id;       ///< stands in a URI: letters, digits, "-" and "_" alone
    std::string account;  ///< "monitoring"
    std::chrono::system_clock::time_point since;
};

struct NewSession {
    Session session;
    std::string token;  ///< what the client sends from then on: printable ASCII without blanks
};

/// Why there is no new session.
struct SessionRefusal {
    enum class Why {
        NotProved,  ///< there is no such account, or the password is another one
        TooMany,    ///< sessions
        NotNow,     ///< not before `wait` is over: too many attempts failed
    };
    Why why = Why::NotProved;
    std::chrono::seconds wait{0};
};

/// Who keeps accounts and sessions. Any thread may call any of this at any time. What a client sends as a
/// token is none of this room's business: who has proved to be whom stands in the request.
class Accounts {
  public:
    Accounts() = default;
    Accounts(const Accounts&) = delete;
    Accounts& operator=(const Accounts&) = delete;
    virtual ~Accounts() = default;

    [[nodiscard]] virtual std::variant<NewSession, SessionRefusal> Create(const std::string& account,
                                                                          const std::string& password) = 0;
    /// False: there is no such session any more.
    [[nodiscard]] virtual bool End(const std::string& id) = 0;
    [[nodiscard]] virtual std::vector<Session> List() const = 0;
};

}  // namespace redfish
