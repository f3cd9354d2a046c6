#include "Configuration.h"

#include "Channels.h"
#include "Section.h"
#include "basics/Text.h"
#include "basics/Words.h"

#include <algorithm>
#include <utility>

namespace service {
namespace {

using std::chrono::hours;
using std::chrono::seconds;

constexpr hours kDay{24};
constexpr std::uint64_t kMostCount = 1'000'000'000;

void TakeLimits(Section section, inventory::Limits& limits) {
    constexpr std::uint64_t kMostDegrees = 200;
    constexpr std::uint64_t kMostSpares = 1000;
    section.TakeCount("max_temperature", limits.temperature, 1, kMostDegrees);
    section.TakeCount("max_media_errors", limits.mediaErrors, 0, kMostCount);
    section.TakeCount("max_media_error_growth", limits.mediaErrorGrowth, 0, kMostCount);
    section.TakeCount("min_spares", limits.spares, 0, kMostSpares);
    section.End();
}

void TakeGrowth(Section section, watch::Rules& rules) {
    section.TakeCount("media_errors", rules.mediaErrors, 0, kMostCount);
    section.TakeCount("other_errors", rules.otherErrors, 0, kMostCount);
    section.TakeCount("predictive_failures", rules.predictiveFailures, 0, kMostCount);
    section.End();
}

void TakeAddresses(Section& file, std::optional<std::vector<Address>>& addresses) {
    std::optional<std::vector<std::string>> texts;
    file.Take("listen", texts);
    if (!texts) {
        return;
    }
    addresses.emplace();
    for (const std::string& text : *texts) {
        if (const std::optional<Address> address = AddressFrom(text)) {
            addresses->push_back(*address);
        } else {
            file.Complain("listen",
                          '"' + text +
                              "\" is no address such as \"127.0.0.1:8282\", \"[::]:8443\" or "
                              "\"unix:/run/mngsrvraid/mngsrvraid.sock\"; beyond this machine there is no "
                              "http without encryption");
        }
    }
}

void TakeDoors(Section& file, DoorsConfiguration& doors) {
    TakeAddresses(file, doors.listen);
    file.Take("accounts", doors.accounts);
    file.Take("tls_certificate", doors.certificate);
    file.Take("tls_key", doors.key);
    file.Take("metrics_from", doors.metricsFrom);
    file.Take("doors_user", doors.user);
    const auto isEncrypted = [](const Address& address) { return address.isEncrypted; };
    if (doors.listen && std::any_of(doors.listen->begin(), doors.listen->end(), isEncrypted)) {
        if (!doors.certificate || !doors.key) {
            file.Complain("listen",
                          "whoever listens beyond this machine needs tls_certificate and tls_key; "
                          "mngsrvraidd setup-tls makes some for trying out");
        }
        if (!doors.accounts) {
            file.Complain(
                "listen",
                "whoever listens beyond this machine needs accounts; mngsrvraidd passwd makes them");
        }
    }
}

// Lines of a file are the administrator's own, and yet they may hold anything.
std::string Joined(const std::vector<std::string>& problems) {
    return basics::Joined(problems, "; ");
}

/// 12 of "line 12: ...".
unsigned LineIn(std::string_view problem) {
    problem.remove_prefix(std::min(problem.find(' ') + 1, problem.size()));
    return basics::NumberFrom<unsigned>(problem.substr(0, problem.find(':'))).value_or(0);
}

toml::table Parse(std::string_view text) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        throw ConfigurationError({"line " + std::to_string(error.source().begin.line) + ": " +
                                  basics::OneLine(std::string(error.description()))});
    }
}

}  // namespace

ConfigurationError::ConfigurationError(std::vector<std::string> problems)
    : std::runtime_error(Joined(problems)), m_Problems(std::move(problems)) {}

Configuration ReadConfiguration(std::string_view text) {
    constexpr unsigned kMostFailures = 1000;
    const toml::table table = Parse(text);
    std::vector<std::string> problems;
    Section file(&table, "", problems);
    Configuration configuration;
    file.Take("interval", configuration.interval, seconds(1), kDay);
    file.Take("smart_interval", configuration.smartInterval, seconds(0), 30 * kDay);
    file.Take("smart_of_sleeping", configuration.asksSleeping);
    file.Take("timeout", configuration.timeLimit, seconds(1), hours(1));
    file.Take("host", configuration.host);
    file.Take("history", configuration.history);
    file.Take("expect", configuration.expect);
    file.Take("app_key", configuration.appKey);
    file.TakeCount("failures_to_tell", configuration.rules.failuresToTell, 1, kMostFailures);
    file.Take("calm", configuration.rules.calm, seconds(0), kDay);
    file.Take("reminder", configuration.rules.reminder, seconds(1), 30 * kDay);
    TakeLimits(file.Below("limits"), configuration.limits);
    TakeGrowth(file.Below("growth"), configuration.rules);
    TakeDoors(file, configuration.doors);
    configuration.channels = TakeChannels(file);
    file.End();
    if (configuration.limits.mediaErrorGrowth && !configuration.expect) {
        file.Complain("limits", "max_media_error_growth needs to know since when: expect");
    }
    if (!problems.empty()) {
        std::stable_sort(
            problems.begin(), problems.end(),
            [](const std::string& one, const std::string& other) { return LineIn(one) < LineIn(other); });
        throw ConfigurationError(std::move(problems));
    }
    return configuration;
}

}  // namespace service
