#pragma once

#include "inventory/Criteria.h"
#include "telling/Channel.h"
#include "watch/Watch.h"

#include <chrono>
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
    std::vector<telling::Channel> channels;  ///< never empty once it is read
    bool operator==(const Configuration&) const = default;
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
