#include "capture/Capture.h"

#include "CaptureFolder.h"
#include "KeyLines.h"
#include "Readme.h"
#include "Recording.h"
#include "RedactedTexts.h"
#include "basics/Failure.h"
#include "basics/Text.h"
#include "calls/InstallRoot.h"
#include "inventory/Server.h"
#include "scenario/ScenarioText.h"

#include <functional>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace capture {
namespace {

using basics::Failure;
using basics::OneLine;
using scenario::ScenarioInstructions;
using scenario::ScenarioStem;

// The values of a key, in their order.
std::vector<std::string> ValuesOf(const std::string& text, std::string_view wanted) {
    std::vector<std::string> values;
    ForEachKeyLine(text, [&](std::string_view key, std::string_view value) {
        if (key == wanted) {
            values.emplace_back(value);
        }
    });
    return values;
}

std::string Code(const std::string& arguments) {
    return "`vdkcli " + arguments + "`";
}

}  // namespace

class Capture::Work final {
  public:
    Work(CaptureRequest request, const std::string& records)
        : m_Request(std::move(request)),
          m_Folder(m_Request.folder),
          m_Recording(records),
          m_Records(records) {}

    [[nodiscard]] Captured Run(calls::ProgressReceiver* progress);

  private:
    struct MethodFailure {
        std::string call;  ///< "drive 0 252 3: "; "" where it is the server
        Failure error;
    };

    void Ask();
    void AskForDrives(calls::Inquiry& inquiry, const std::string& document);
    [[nodiscard]] std::optional<std::string> Call(const std::string& name,
                                                  const std::function<std::string()>& method);
    [[nodiscard]] std::string Write();
    [[nodiscard]] Texts TheTexts() const;
    [[nodiscard]] Account TheAccount() const;
    [[nodiscard]] std::vector<std::string> Changes() const;
    [[nodiscard]] std::string Answers(const std::string& arguments) const;
    [[nodiscard]] std::optional<Failure> TheFailure(const std::string& what) const;

    CaptureRequest m_Request;
    CaptureFolder m_Folder;
    Recording m_Recording;
    std::string m_Records;
    std::vector<MethodFailure> m_Failures;
    std::vector<std::string> m_Notes;
    std::size_t m_DriveCount = 0;
};

Capture::Capture(CaptureRequest request, const std::string& records)
    : m_Work(std::make_unique<Work>(std::move(request), records)) {}

Capture::~Capture() = default;

Captured Capture::Run(calls::ProgressReceiver* progress) {
    return m_Work->Run(progress);
}

Captured Capture::Work::Run(calls::ProgressReceiver* progress) {
    m_Request.inquiry.progress = progress;
    Ask();
    if (m_Recording.Commands().empty()) {
        throw TheFailure("nothing was recorded")
            .value_or(Failure(Failure::Kind::Method, "nothing was recorded: the tool was not run"));
    }
    const std::string list = Write();
    return {"recorded in " + OneLine(m_Folder.Path()) + ": " + std::to_string(m_Recording.Commands().size()) +
                " commands, " + std::to_string(m_DriveCount) + " drives" +
                (m_Request.isRedacted ? ", redacted\n" : "\n") + list,
            TheFailure("what failed is recorded in " + m_Folder.Path())};
}

void Capture::Work::Ask() {
    calls::Inquiry inquiry(m_Request.inquiry);
    const auto document = Call("", [&] { return inquiry.AskForServer(); });
    if (document) {
        try {
            AskForDrives(inquiry, *document);
        } catch (const Failure& error) {
            m_Failures.push_back({"", error});
        }
    } else {
        m_Notes.emplace_back(
            "Which drives there are is not known, because get-info failed: none was asked for.");
    }
}

void Capture::Work::AskForDrives(calls::Inquiry& inquiry, const std::string& document) {
    const inventory::Document read = calls::ReadDocument(document, "what the module returned");
    std::set<std::vector<std::string>> asked;
    std::vector<calls::DrivePlace> places;
    for (calls::DrivePlace& place : calls::DrivePlaces(inventory::Survey(read))) {
        if (!place.IsKnown()) {
            m_Notes.emplace_back("A drive of controller " + place.controller +
                                 " was not asked for: its report does not say where it is.");
        } else if (asked.insert({place.controller, place.enclosure, place.slot}).second) {
            places.push_back(std::move(place));
        }
    }
    for (const calls::DrivePlace& place : places) {
        inquiry.ShowDone(m_DriveCount, places.size());
        (void)Call("drive " + place.controller + " " + place.enclosure + " " + place.slot + ": ",
                   [&] { return inquiry.AskForDrive(place); });
        ++m_DriveCount;
    }
}

// A method's document; nothing when the method failed.
std::optional<std::string> Capture::Work::Call(const std::string& name,
                                               const std::function<std::string()>& method) {
    std::optional<std::string> document;
    try {
        document = method();
    } catch (const Failure& error) {
        m_Failures.push_back({name, error});
    }
    m_Recording.Take();
    return document;
}

// The lines that say what was replaced.
std::string Capture::Work::Write() {
    Texts texts = TheTexts();
    std::string list;
    if (m_Request.isRedacted) {
        list = ListForScreen(
            RedactTexts(texts, {.words = m_Request.words,
                                .host = m_Request.host,
                                .paths = {m_Records, calls::ResultDirectory(), m_Request.folder}}));
    }
    for (const auto& [name, text] : texts) {
        if (name != kReadme) {
            m_Folder.Write(name, text);
        }
    }
    m_Folder.Describe(texts[kReadme]);
    m_Folder.Complete();
    return list;
}

Texts Capture::Work::TheTexts() const {
    Texts texts = {{kReadme, ReadmeText(TheAccount())}};
    for (const RecordedCommand& command : m_Recording.Commands()) {
        const std::string stem = ScenarioStem(command.arguments);
        texts[stem + ".txt"] = command.output;
        const std::string instructions = ScenarioInstructions(command.statuses).value_or("");
        if (!instructions.empty()) {
            texts[stem + ".do"] = instructions;
        }
    }
    return texts;
}

std::string Capture::Work::Answers(const std::string& arguments) const {
    for (const RecordedCommand& command : m_Recording.Commands()) {
        if (command.arguments.starts_with(arguments)) {
            return command.output;
        }
    }
    return "";
}

Account Capture::Work::TheAccount() const {
    Account account = {.host = m_Request.host,
                       .scenario = m_Request.scenario,
                       .controllers = ValuesOf(Answers("-ctrlinfo"), "Product Name"),
                       .versions = ValuesOf(Answers("-v"), "Product Version"),
                       .drives = m_DriveCount,
                       .changes = Changes(),
                       .missing = m_Notes};
    for (const MethodFailure& failure : m_Failures) {
        account.failures.push_back(failure.call + failure.error.what());
    }
    account.missing.insert(account.missing.end(), m_Recording.Notes().begin(), m_Recording.Notes().end());
    return account;
}

std::vector<std::string> Capture::Work::Changes() const {
    std::vector<std::string> changes;
    for (const RecordedCommand& command : m_Recording.Commands()) {
        if (command.isChanged) {
            changes.push_back(
                Code(command.arguments) +
                " was answered differently at different times. The text is that of the last run that "
                "went well; how it ends is as in the first call.");
        }
        if (!ScenarioInstructions(command.statuses)) {
            changes.push_back(
                Code(command.arguments) +
                " failed and went well by turns, which no instructions can say; here it goes well.");
        }
    }
    return changes;
}

// The first failure behind `what` is to be said of all of them.
std::optional<Failure> Capture::Work::TheFailure(const std::string& what) const {
    if (m_Failures.empty()) {
        return std::nullopt;
    }
    const bool isNamed = !m_Request.isRedacted && !m_Request.host.empty();
    const MethodFailure& first = m_Failures.front();
    const std::string more = m_Failures.size() == 1 ? ""
                                                    : " (and " + std::to_string(m_Failures.size() - 1) +
                                                          " more, told in its README.md)";
    return Failure(first.error.WhatKind(), (isNamed ? m_Request.host + ": " : "") + what + ": " + first.call +
                                               first.error.what() + more);
}

}  // namespace capture
