#include "capture/Capture.h"

#include "CaptureFolder.h"
#include "KeyLines.h"
#include "Recording.h"
#include "Redaction.h"
#include "basics/Failure.h"
#include "basics/Text.h"
#include "basics/Time.h"
#include "basics/Words.h"
#include "inventory/Server.h"
#include "scenario/ScenarioText.h"

#include <chrono>
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
            values.emplace_back(OneLine(std::string(value)));
        }
    });
    return values;
}

std::string Known(const std::vector<std::string>& texts) {
    const std::string joined = basics::Joined(texts);
    return joined.empty() ? "not known" : joined;
}

std::string Section(const std::string& title, const std::vector<std::string>& lines) {
    std::string text = lines.empty() ? "" : "\n## " + title + "\n\n";
    for (const std::string& line : lines) {
        text += "- " + OneLine(line) + "\n";
    }
    return text;
}

std::string Code(const std::string& arguments) {
    return "`vdkcli " + arguments + "`";
}

}  // namespace

class Capture::Work final {
  public:
    Work(CaptureRequest request, const std::string& records)
        : m_Request(std::move(request)), m_Folder(m_Request.folder), m_Recording(records) {}

    [[nodiscard]] std::string Run(calls::ProgressReceiver* progress);

  private:
    struct MethodFailure {
        std::string call;  ///< "drive 0 252 3: "; "" where it is the server
        Failure error;
    };

    void Ask();
    void AskForDrives(calls::Inquiry& inquiry, const std::string& document);
    [[nodiscard]] std::optional<std::string> Call(const std::string& name,
                                                  const std::function<std::string()>& method);
    void Write();
    [[nodiscard]] std::string Readme() const;
    [[nodiscard]] std::string Answers(const std::string& arguments) const;
    void TellFailure() const;

    CaptureRequest m_Request;
    CaptureFolder m_Folder;
    Recording m_Recording;
    Redaction m_Redaction;
    std::vector<MethodFailure> m_Failures;
    std::vector<std::string> m_Notes;
    std::size_t m_DriveCount = 0;
};

Capture::Capture(CaptureRequest request, const std::string& records)
    : m_Work(std::make_unique<Work>(std::move(request), records)) {}

Capture::~Capture() = default;

std::string Capture::Run(calls::ProgressReceiver* progress) {
    return m_Work->Run(progress);
}

std::string Capture::Work::Run(calls::ProgressReceiver* progress) {
    m_Request.inquiry.progress = progress;
    Ask();
    Write();
    TellFailure();
    return "recorded in " + OneLine(m_Folder.Path()) + ": " + std::to_string(m_Recording.Commands().size()) +
           " commands, " + std::to_string(m_DriveCount) + " drives" +
           (m_Request.isRedacted ? ", redacted\n" : "\n");
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

void Capture::Work::Write() {
    std::string readme = Readme();
    if (m_Request.isRedacted) {
        for (const RecordedCommand& command : m_Recording.Commands()) {
            m_Redaction.Collect(command.output);
        }
    }
    for (const RecordedCommand& command : m_Recording.Commands()) {
        const std::string stem = ScenarioStem(command.arguments);
        m_Folder.Write(stem + ".txt", m_Redaction.Redact(command.output));
        const std::string instructions = ScenarioInstructions(command.statuses).value_or("");
        if (!instructions.empty()) {
            m_Folder.Write(stem + ".do", instructions);
        }
    }
    m_Folder.Describe(m_Redaction.Redact(readme));
    if (!m_Recording.Commands().empty()) {
        m_Folder.Complete();
    }
}

std::string Capture::Work::Answers(const std::string& arguments) const {
    for (const RecordedCommand& command : m_Recording.Commands()) {
        if (command.arguments.starts_with(arguments)) {
            return command.output;
        }
    }
    return "";
}

std::string Capture::Work::Readme() const {
    const std::string source =
        m_Request.scenario.empty() ? "this server's tool" : "the scenario " + OneLine(m_Request.scenario);
    std::string text = "# Capture of a RAID server\n\nRecorded by `mngsrvraid capture` from " + source +
                       ", " + basics::UtcText(std::chrono::system_clock::now(), "%Y-%m-%d %H:%M:%S UTC") +
                       ".\n\n";
    text += "- Controllers: " + Known(ValuesOf(Answers("-ctrlinfo"), "Product Name")) + "\n";
    text += "- Version of the tool: " + Known(ValuesOf(Answers("-v"), "Product Version")) + "\n";
    text += "- Drives asked for: " + std::to_string(m_DriveCount) + "\n";
    text += m_Request.isRedacted ? "- Redacted: serial numbers and world-wide names are replaced by words.\n"
                                 : "- Not redacted: serial numbers are in it as the tool told them.\n";
    text += m_Recording.Commands().empty() ? "- Incomplete: the tool was never run.\n"
                                           : "- Complete: all that could be asked was asked.\n";
    std::vector<std::string> lines;
    for (const MethodFailure& failure : m_Failures) {
        lines.push_back(failure.call + failure.error.what());
    }
    text += Section("What failed", lines);
    lines.clear();
    for (const RecordedCommand& command : m_Recording.Commands()) {
        if (command.isChanged) {
            lines.push_back(
                Code(command.arguments) +
                " was answered differently at different times. The text is that of the last run that "
                "went well; how it ends is as in the first call.");
        }
        if (!ScenarioInstructions(command.statuses)) {
            lines.push_back(
                Code(command.arguments) +
                " failed and went well by turns, which no instructions can say; here it goes well.");
        }
    }
    text += Section("What is not as it was", lines);
    lines = m_Notes;
    lines.insert(lines.end(), m_Recording.Notes().begin(), m_Recording.Notes().end());
    if (m_Recording.Commands().empty()) {
        lines.emplace_back("The tool was not run, so nothing is recorded.");
    }
    return text + Section("What is missing", lines);
}

void Capture::Work::TellFailure() const {
    if (m_Failures.empty()) {
        return;
    }
    const MethodFailure& first = m_Failures.front();
    const std::string more = m_Failures.size() == 1 ? ""
                                                    : " (and " + std::to_string(m_Failures.size() - 1) +
                                                          " more, told in its README.md)";
    throw Failure(first.error.WhatKind(), std::string("what failed is recorded in ") + m_Folder.Path() +
                                              ": " + first.call + first.error.what() + more);
}

}  // namespace capture
