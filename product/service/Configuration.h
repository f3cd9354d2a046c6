#pragma once

#include "inventory/Criteria.h"
#include "telling/Channel.h"
#include "watch/Watch.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace service {

/// Why a text is no configuration: a line for each thing, "line 12: interval: ...".
class ConfigurationError final : public std::runtime_error {
  public:
    explicit ConfigurationError(std::vector<std::string> problems);
    [[nodiscard]] const std::vector<std::string>& Problems() const { return m_Problems; }

  private:
    std::vector<std::string> m_Problems;
};

/// Where clients may come in: "unix:/run/mngsrvraid/mngsrvraid.sock", "127.0.0.1:8282", "[::]:8443".
struct Address {
    std::string text;    ///< as it was written
    std::string path{};  ///< of a Unix socket; empty for one of the network
    std::string host{};  ///< without brackets
    std::uint16_t port = 0;
    bool isEncrypted = false;  ///< whatever is not of this machine alone is
    bool operator==(const Address&) const = default;
};

/// Nothing for a text that is none. Before an address there may be "http://", on loopback alone, or
/// "https://".
[[nodiscard]] std::optional<Address> AddressFrom(const std::string& text);

/// Who may ask over the network, and how.
struct DoorsConfiguration {
    /// Nothing: a Unix socket at the usual place, where that can be made.
    std::optional<std::vector<Address>> listen{};
    std::optional<std::string> accounts{}, certificate{}, key{};  ///< files
    std::vector<std::string> metricsFrom{};                       ///< who gets /metrics without an account
    std::string user = "nobody";  ///< who the process is that faces the network
    bool operator==(const DoorsConfiguration&) const = default;
};

/// What an administrator may choose; docs/watch.md has every key. A plain value, with the defaults.
struct Configuration {
    std::chrono::seconds interval{std::chrono::minutes(5)};     ///< from one inquiry to the next
    std::chrono::seconds smartInterval{std::chrono::hours(6)};  ///< for all drives together; 0: never
    bool asksSleeping = false;                                  ///< SMART data of drives that sleep, too
    std::chrono::seconds timeLimit{50};                         ///< of an inquiry
    std::string host;                                           ///< empty: this machine's name
    std::string history = "/var/lib/mngsrvraid/history.db";
    std::optional<std::string> expect;  ///< a file that `mngsrvraid expect` has saved
    std::optional<std::string> appKey;
    inventory::Limits limits;
    watch::Rules rules;
    DoorsConfiguration doors;
    std::vector<telling::Channel> channels;  ///< never empty once it is read
};

/// Reads a configuration, such as
///
///     interval = "5m"
///     expect = "/etc/mngsrvraid/expect.json"
///
///     [limits]
///     max_temperature = 50
///
/// Throws ConfigurationError with everything that is wrong with it.
[[nodiscard]] Configuration ReadConfiguration(std::string_view text);

}  // namespace service
