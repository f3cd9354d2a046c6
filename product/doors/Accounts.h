#pragma once

#include "redfish/Accounts.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace doors {

/// Names with hashed passwords, as people keep them in a file that `mngsrvraidd passwd` writes:
///
///     # who may ask over the network
///     monitoring:$y$j9T$GkT...$8cPz...
///
/// A plain value.
class AccountList final {
  public:
    /// Throws basics::Failure(Use) with the line for anything else, a name that is there twice included.
    [[nodiscard]] static AccountList Read(std::string_view text);

    /// The hash; null where there is no such account.
    [[nodiscard]] const std::string* HashOf(const std::string& name) const;

    [[nodiscard]] bool IsEmpty() const { return m_Hashes.empty(); }

  private:
    std::map<std::string, std::string> m_Hashes;
};

/// A hash for such a file, with a salt of its own; slow on purpose. Throws basics::Failure(Surroundings).
[[nodiscard]] std::string HashOf(const std::string& password);

/// Who has proved who he is: accounts with their passwords, and sessions. Any thread.
class Accounts final : public redfish::Accounts {
  public:
    using Clock = std::chrono::steady_clock;

    /// Without a list nobody needs an account. `now` tells how long sessions last.
    explicit Accounts(std::optional<AccountList> list, std::function<Clock::time_point()> now = Clock::now)
        : m_List(std::move(list)), m_Now(std::move(now)) {}

    [[nodiscard]] bool AreNeeded() const { return m_List.has_value(); }

    /// Whether that is the account's password. Takes some hundredths of a second, for an account that is not
    /// there, too.
    [[nodiscard]] bool Check(const std::string& name, const std::string& password);

    /// Whether it was so a short while ago; at once. False says nothing.
    [[nodiscard]] bool IsKnown(const std::string& name, const std::string& password);

    /// The session with that token, which lasts on; nothing where there is none.
    [[nodiscard]] std::optional<redfish::Session> WhoIs(std::string_view token);

    /// Whether there is a session of that name; that does not make it last.
    [[nodiscard]] bool Has(const std::string& session) const;

    /// Of an account that has as many as it may have, the one that was not used for longest makes way.
    [[nodiscard]] std::variant<redfish::NewSession, redfish::SessionRefusal> Create(
        const std::string& account, const std::string& password) override;
    [[nodiscard]] bool End(const std::string& id) override;
    [[nodiscard]] std::vector<redfish::Session> List() const override;

  private:
    struct Kept {
        redfish::Session session;
        Clock::time_point used;
    };

    [[nodiscard]] std::string DigestOf(std::string_view name, std::string_view secret);
    void ForgetOldSessions();
    void MakeWayFor(const std::string& account);

    const std::optional<AccountList> m_List;
    const std::function<Clock::time_point()> m_Now;
    mutable std::mutex m_Mutex;
    std::string m_Salt;                                            ///< of this process, for digests
    std::unordered_map<std::string, Clock::time_point> m_Checked;  ///< digests of what was proved
    std::unordered_map<std::string, Kept> m_Sessions;              ///< by the digests of their tokens
};

/// Lets an address that fails wait, each time longer; of IPv6 the net of 64 bits, as one machine has all of
/// them. Any thread.
class Patience final {
  public:
    using Clock = std::chrono::steady_clock;

    /// How long the address is still to wait; 0: it may try.
    [[nodiscard]] std::chrono::seconds WaitOf(const std::string& address, Clock::time_point now) const;
    void Failed(const std::string& address, Clock::time_point now);
    void Succeeded(const std::string& address);

  private:
    struct Failures {
        unsigned count = 0;
        Clock::time_point until, last;
    };

    mutable std::mutex m_Mutex;
    std::unordered_map<std::string, Failures> m_Failures;
};

}  // namespace doors
