#include "host/Capture.h"

#include "host/FailureText.h"
#include "host/KeyLines.h"
#include "host/ScenarioText.h"

#include "inventory/Server.h"

#include <array>
#include <ctime>
#include <set>

namespace host {
namespace {

std::string Now() {
    const std::time_t now = std::time(nullptr);
    std::tm broken{};
    std::array<char, sizeof "2026-11-21 08:26:38 UTC"> text{};
    ::gmtime_r(&now, &broken);
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S UTC", &broken);
    return text.data();
}

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

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
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

Capture::Capture(const Options& options, const std::string& records)
    : m_Options(options), m_Folder(options.folder), m_Recording(records) {}

std::string Capture::Run() {
    Ask();
    Write();
    TellFailure();
    return "recorded in " + OneLine(m_Folder.Path()) + ": " + std::to_string(m_Recording.Commands().size()) +
           " commands, " + std::to_string(m_DriveCount) + " drives" +
           (m_Options.isRedacted ? ", redacted\n" : "\n");
}

void Capture::Ask() {
    Inquiry inquiry(m_Options);
    const auto document = Call("", [&] { return inquiry.AskForServer(); });
    if (document) {
        try {
            AskForDrives(inquiry, *document);
        } catch (const HostError& error) {
            m_Failures.push_back({"", error});
        }
    } else {
        m_Notes.emplace_back(
            "Which drives there are is not known, because get-info failed: none was asked for.");
    }
}

void Capture::AskForDrives(Inquiry& inquiry, const std::string& document) {
    const inventory::Document read = ReadDocument(document, "what the module returned");
    std::set<std::vector<std::string>> asked;
    std::vector<DrivePlace> places;
    for (DrivePlace& place : DrivePlaces(inventory::Survey(read))) {
        if (!place.IsKnown()) {
            m_Notes.emplace_back("A drive of controller " + place.controller +
                                 " was not asked for: its report does not say where it is.");
        } else if (asked.insert({place.controller, place.enclosure, place.slot}).second) {
            places.push_back(std::move(place));
        }
    }
    for (const DrivePlace& place : places) {
        inquiry.ShowDone(m_DriveCount, places.size());
        const auto parameters = DriveParameters(place.controller, place.enclosure, place.slot);
        (void)Call("drive " + place.controller + " " + place.enclosure + " " + place.slot + ": ",
                   [&] { return inquiry.AskForDrive(parameters); });
        ++m_DriveCount;
    }
}

// A method's document; nothing when the method failed.
std::optional<std::string> Capture::Call(const std::string& name,
                                         const std::function<std::string()>& method) {
    std::optional<std::string> document;
    try {
        document = method();
    } catch (const HostError& error) {
        m_Failures.push_back({name, error});
    }
    m_Recording.Take();
    return document;
}

void Capture::Write() {
    std::string readme = Readme();
    if (m_Options.isRedacted) {
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

std::string Capture::Answers(const std::string& arguments) const {
    for (const RecordedCommand& command : m_Recording.Commands()) {
        if (command.arguments.starts_with(arguments)) {
            return command.output;
        }
    }
    return "";
}

std::string Capture::Readme() const {
    const std::string source = m_Options.scenario ? "the scenario " + OneLine(*m_Options.scenario)
                                                  : std::string("this server's tool");
    std::string text = "# Capture of a RAID server\n\nRecorded by `mngsrvraid capture` from " + source +
                       ", " + Now() + ".\n\n";
    text += "- Controllers: " + Joined(ValuesOf(Answers("-ctrlinfo"), "Product Name")) + "\n";
    text += "- Version of the tool: " + Joined(ValuesOf(Answers("-v"), "Product Version")) + "\n";
    text += "- Drives asked for: " + std::to_string(m_DriveCount) + "\n";
    text += m_Options.isRedacted ? "- Redacted: serial numbers and world-wide names are replaced by words.\n"
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

void Capture::TellFailure() const {
    if (m_Failures.empty()) {
        return;
    }
    const MethodFailure& first = m_Failures.front();
    const std::string more = m_Failures.size() == 1 ? ""
                                                    : " (and " + std::to_string(m_Failures.size() - 1) +
                                                          " more, told in its README.md)";
    throw HostError(first.error.Status(), std::string("what failed is recorded in ") + m_Folder.Path() +
                                              ": " + first.call + first.error.what() + more);
}

}  // namespace host
