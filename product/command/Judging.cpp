#include "Judging.h"

#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "basics/Time.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace command {
namespace {

using basics::Failure;
using inventory::Acceptance;
using inventory::Expectations;
using inventory::Finding;
using inventory::Level;

Expectations ReadFrom(const std::string& file) {
    try {
        return inventory::ReadExpectations(basics::ReadFile(file));
    } catch (const inventory::ExpectationsError& error) {
        basics::FailSurroundings(file + " holds no expectations: " + error.what());
    }
}

/// The file that `expect` is going to replace.
std::optional<std::string> EarlierFile(const Options& options) {
    std::error_code error;
    const bool isThere = options.output && std::filesystem::is_regular_file(*options.output, error);
    return isThere ? options.output : std::nullopt;
}

[[noreturn]] void RefuseToSave(const inventory::Health& health, bool mayBeAccepted) {
    const std::string worst = health.findings.empty() ? "" : ": " + Describe(health.findings.front());
    throw Failure(Failure::Kind::Method,
                  "nothing is saved, because the server is not well: " + std::string(NameOf(health.level)) +
                      ", " + Headline(health) + worst +
                      (mayBeAccepted ? "; mend it, or accept what is known: --accept-until DAY --reason TEXT"
                                     : "; mend it"));
}

/// With what is accepted anew in the place of what was accepted of the same part and state before.
void Accept(const Finding& finding, const Options& options, std::vector<Acceptance>& accepted) {
    const Acceptance added = inventory::AcceptanceOf(finding, *options.acceptUntil, *options.acceptReason);
    std::erase_if(accepted, [&added](const Acceptance& each) {
        return each.place == added.place && each.what == added.what && each.serial == added.serial;
    });
    accepted.push_back(added);
}

}  // namespace

inventory::Criteria CriteriaFor(const Options& options) {
    inventory::Criteria criteria;
    criteria.limits = options.limits;
    criteria.today = basics::UtcText(std::chrono::system_clock::now(), "%Y-%m-%d");
    if (options.acceptUntil && *options.acceptUntil < criteria.today) {
        throw Failure(Failure::Kind::Use, "--accept-until names a day that is over");
    }
    if (options.expect) {
        criteria.expectations = ReadFrom(*options.expect);
    } else if (options.action == Options::Action::Expect) {
        if (const std::optional<std::string> earlier = EarlierFile(options)) {
            criteria.expectations = ReadFrom(*earlier);
            criteria.expectations->controllers.reset();
        }
    }
    return criteria;
}

void SaveExpectations(const inventory::Snapshot& snapshot, const Options& options,
                      const inventory::Criteria& criteria, const basics::DocumentTarget& target) {
    const inventory::Health& health = snapshot.TheHealth();
    const bool mayBeAccepted = health.counts.drives > 0;
    if (health.level != Level::Ok && !(options.acceptUntil && mayBeAccepted)) {
        RefuseToSave(health, mayBeAccepted);
    }
    Expectations expectations = criteria.expectations.value_or(Expectations());
    expectations.host = options.host;
    expectations.savedAt = basics::UtcText(std::chrono::system_clock::now());
    expectations.controllers = inventory::ExpectedOf(snapshot.TheServer());
    for (const Finding& finding : health.findings) {
        if (!finding.isAccepted) {
            Accept(finding, options, expectations.accepted);
        }
    }
    target.Store(Text(expectations));
    if (options.output) {
        basics::DocumentTarget::StandardOutput().Store(
            basics::OneLine("saved in " + *options.output + ": " + Describe(health.counts) + ", " +
                            std::to_string(health.findings.size()) +
                            (health.findings.size() == 1 ? " finding" : " findings") + " accepted") +
            "\n");
    }
}

}  // namespace command
