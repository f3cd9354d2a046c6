#include "Commands.h"

#include "Judging.h"
#include "Screen.h"
#include "ServerInquiry.h"
#include "basics/Descriptor.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "views/Views.h"

#include "qel/CStringUtil.h"

#include <unistd.h>

#include <algorithm>
#include <new>
#include <optional>

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

/// Asks for the SMART data of every drive whose place is known. A drive that cannot answer is not to hide the
/// others: the first failure is returned.
std::optional<Failure> AskForDrives(ServerInquiry& inquiry, const std::vector<DrivePlace>& places,
                                    std::vector<inventory::DriveAnswer>& answers) {
    std::optional<Failure> failure;
    for (std::size_t number = 0; number < places.size(); ++number) {
        const DrivePlace& place = places[number];
        inquiry->ShowDone(number, places.size());
        if (!place.IsKnown()) {
            continue;
        }
        try {
            const std::string xml = inquiry->AskForDrive(place);
            answers.push_back(
                {place.controller, place.enclosure, place.slot, ReadDocument(xml, kFromModule)});
        } catch (const Failure& error) {
            if (!failure) {
                failure = Failure(error.WhatKind(), "SMART data are missing: controller " + place.controller +
                                                        ", drive in enclosure " + place.enclosure + " slot " +
                                                        place.slot + ": " + error.what());
            }
        }
    }
    return failure;
}

Shown AskWithSmart(const Options& options, const Surroundings& surroundings) {
    ServerInquiry inquiry(options);
    inventory::Document document = ReadDocument(inquiry->AskForServer(), kFromModule);
    std::vector<inventory::DriveAnswer> answers;
    const std::optional<Failure> failure =
        AskForDrives(inquiry, calls::DrivePlaces(inventory::Survey(document)), answers);
    Snapshot snapshot(std::move(document), "", std::move(answers), surroundings.criteria);
    snapshot.runs = inquiry->Runs();
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
