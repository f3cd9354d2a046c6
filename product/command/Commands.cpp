#include "Commands.h"

#include "Judging.h"
#include "Screen.h"
#include "ServerInquiry.h"
#include "basics/Descriptor.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "calls/ManyDrives.h"
#include "views/Views.h"

#include "qel/CStringUtil.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <new>
#include <optional>
#include <utility>

namespace command {
namespace {

using basics::Failure;
using basics::ReadFile;
using calls::DrivePlace;
using calls::ReadDocument;
using inventory::Criteria;
using inventory::Level;
using inventory::Snapshot;

std::string Present(const Snapshot& snapshot, const Options& options, const Surroundings& surroundings) {
    switch (options.format) {
        case Options::Format::Tree:
            return views::Tree(snapshot);
        case Options::Format::Json:
            return views::Json(snapshot, options.isCompact);
        case Options::Format::Html:
            return views::Html(snapshot, surroundings.history ? &*surroundings.history : nullptr);
        case Options::Format::Prometheus:
            return views::Prometheus(snapshot);
        case Options::Format::Xml:  // passed on as it is, before this
        case Options::Format::Table:
            break;
    }
    return views::Table(snapshot, options.output ? views::TerminalStyle() : StyleOfStandardOutput());
}

constexpr const char* kFromModule = "what the module returned";

/// A document in the format that is wanted: XML is passed on as it is.
std::string InFormat(std::string xml, const std::string& source, const inventory::ToolRuns& runs,
                     const Options& options, const Surroundings& surroundings) {
    if (options.format == Options::Format::Xml) {
        if (options.document) {
            (void)ReadDocument(xml, source);  // Nothing else has seen that it is one.
        }
        return xml;
    }
    const bool isDrive = !options.parameters.empty();
    // As the module reads it: "x" is 0.
    const std::string controller =
        isDrive ? std::to_string(CStringUtil::TStringToNumber(options.parameters.front().text)) : "";
    Snapshot snapshot(ReadDocument(xml, source), controller, {}, surroundings.criteria);
    snapshot.runs = runs;
    snapshot.host = options.host;
    if (options.document) {
        snapshot.takenAt.reset();
    }
    return Present(snapshot, options, surroundings);
}

DrivePlace DriveOf(const Options& options) {
    return {options.parameters.at(0).text, options.parameters.at(1).text, options.parameters.at(2).text};
}

/// What the inquiry draws on the terminal is gone when this returns.
std::string AskOnce(const Options& options, const Surroundings& surroundings) {
    ServerInquiry inquiry(options);
    std::string xml =
        options.parameters.empty() ? inquiry->AskForServer() : inquiry->AskForDrive(DriveOf(options));
    return InFormat(std::move(xml), kFromModule, inquiry->Runs(), options, surroundings);
}

/// What is to be printed, and what failed besides.
struct Shown {
    std::string text;
    std::optional<Failure> failure = {};
};

/// The SMART data of drives as they come, and what failed. A drive that cannot answer is not to hide the
/// others: of the failures that of the first one in the document is told.
class SmartAnswers final {
  public:
    explicit SmartAnswers(std::vector<DrivePlace> places)
        : m_Places(std::move(places)), m_Documents(m_Places.size()) {}

    [[nodiscard]] const std::vector<DrivePlace>& Places() const { return m_Places; }

    void Take(std::size_t number, const std::function<std::string()>& answer) {
        const DrivePlace& place = m_Places.at(number);
        try {
            m_Documents.at(number) = ReadDocument(answer(), kFromModule);
        } catch (const Failure& error) {
            if (number <= m_Failed) {
                m_Failed = number;
                m_Failure =
                    Failure(error.WhatKind(), "SMART data are missing: controller " + place.controller +
                                                  ", drive in enclosure " + place.enclosure + " slot " +
                                                  place.slot + ": " + error.what());
            }
        }
    }

    [[nodiscard]] const std::optional<Failure>& TheFailure() const { return m_Failure; }

    /// In the order of the document.
    [[nodiscard]] std::vector<inventory::DriveAnswer> All() && {
        std::vector<inventory::DriveAnswer> all;
        for (std::size_t number = 0; number < m_Places.size(); ++number) {
            if (m_Documents[number]) {
                const DrivePlace& place = m_Places[number];
                all.push_back(
                    {place.controller, place.enclosure, place.slot, std::move(*m_Documents[number])});
            }
        }
        return all;
    }

  private:
    std::vector<DrivePlace> m_Places;
    std::vector<std::optional<inventory::Document>> m_Documents;
    std::size_t m_Failed = std::numeric_limits<std::size_t>::max();
    std::optional<Failure> m_Failure;
};

/// Asks for every drive whose place is known; what the tool ran for it, in this process and in others.
inventory::ToolRuns AskForDrives(ServerInquiry& inquiry, std::size_t jobs, SmartAnswers& answers) {
    const std::vector<DrivePlace>& places = answers.Places();
    inventory::ToolRuns runs = inquiry->Runs();
    if (jobs > 1) {
        runs += calls::AskForDrives(
            inquiry.Request(), places, jobs,
            [&](std::size_t number, const auto& answer) { answers.Take(number, answer); });
        return runs;
    }
    for (std::size_t number = 0; number < places.size(); ++number) {
        inquiry->ShowDone(number, places.size());
        if (places[number].IsKnown()) {
            answers.Take(number, [&] { return inquiry->AskForDrive(places[number]); });
        }
    }
    return inquiry->Runs();
}

Shown AskWithSmart(const Options& options, const Surroundings& surroundings) {
    ServerInquiry inquiry(options);
    inventory::Document document = ReadDocument(inquiry->AskForServer(), kFromModule);
    SmartAnswers answers(calls::DrivePlaces(inventory::Survey(document)));
    const inventory::ToolRuns runs = AskForDrives(inquiry, options.jobs, answers);
    const std::optional<Failure> failure = answers.TheFailure();
    Snapshot snapshot(std::move(document), "", std::move(answers).All(), surroundings.criteria);
    snapshot.runs = runs;
    snapshot.host = options.host;
    return {Present(snapshot, options, surroundings), failure};
}

Shown Show(const Options& options, const Surroundings& surroundings) {
    if (options.document) {
        return {InFormat(ReadFile(*options.document), *options.document, {}, options, surroundings)};
    }
    return options.hasSmart ? AskWithSmart(options, surroundings) : Shown{AskOnce(options, surroundings)};
}

/// Stores what there is before it tells what is missing.
void Store(const Shown& shown, const basics::DocumentTarget& target) {
    target.Store(shown.text);
    if (shown.failure) {
        throw Failure(*shown.failure);
    }
}

Snapshot TakeSnapshot(const Options& options, const Criteria& criteria) {
    const std::string xml =
        options.document ? ReadFile(*options.document) : ServerInquiry(options)->AskForServer();
    return Snapshot(ReadDocument(xml, options.document.value_or(kFromModule)), "", {}, criteria);
}

int TellHealth(const Options& options, const basics::DocumentTarget& target, const Criteria& criteria) {
    const Snapshot snapshot = TakeSnapshot(options, criteria);
    const inventory::Health& health = snapshot.TheHealth();
    target.Store(views::MonitoringLine(health, options.isVerbose));
    return inventory::PlugInStatusOf(health.level);
}

}  // namespace

int RunCommand(const Options& options, const basics::DocumentTarget& target,
               const Surroundings& surroundings) {
    const Criteria& criteria = surroundings.criteria;
    switch (options.action) {
        case Options::Action::Health:
            return TellHealth(options, target, criteria);
        case Options::Action::Expect:
            SaveExpectations(TakeSnapshot(options, criteria), options, criteria, target);
            return 0;
        case Options::Action::Show:
            Store(Show(options, surroundings), target);
            return 0;
        default:
            target.Store(AskOnce(options, surroundings));
            return 0;
    }
}

int TellUnknownHealth(const std::string& why) noexcept {
    try {
        std::string text = "RAID UNKNOWN - " + basics::OneLine(why);
        std::replace(text.begin(), text.end(), '|', '/');
        text += '\n';
        // Who cannot be told is not told: the exit status still is.
        (void)basics::WriteWhole(STDOUT_FILENO, text);
    } catch (const std::bad_alloc&) {
        return inventory::PlugInStatusOf(Level::Unknown);
    }
    return inventory::PlugInStatusOf(Level::Unknown);
}

}  // namespace command
