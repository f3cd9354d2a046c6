#include "Scenario.h"

#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "ReportParts.h"
#include "ScenarioError.h"
#include "Words.h"

namespace vdksim {

namespace fs = std::filesystem;

namespace {

constexpr const char* kServerFile = "server.conf";
constexpr const char* kInstructionsForAll = "any.do";
constexpr std::string_view kVersionKey = "Product Version";

// server.conf: "version 4.2", "controllers 2", "drives 24", one a line.
MadeUpServer::Shape ReadShape(const fs::path& path, const std::string& contents) {
    MadeUpServer::Shape shape;
    std::istringstream in(contents);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const auto words = WordsOf(line);
        if (words.empty()) {
            continue;
        }
        const auto count = WholeNumber<std::uint32_t>(words.back());
        if (words.size() == 2 && words[0] == "version") {
            shape.version = words[1];
        } else if (words.size() == 2 && words[0] == "controllers" && count) {
            shape.controllers = *count;
        } else if (words.size() == 2 && words[0] == "drives" && count) {
            shape.drives = *count;
        } else {
            throw ScenarioError(kExitBadScenario,
                                path.string() + ":" + std::to_string(number) +
                                    ": expected 'version V', 'controllers N' or 'drives N'");
        }
    }
    return shape;
}

// What follows the colon of the first line that holds the version's key.
std::string VersionIn(std::string_view text) {
    const auto key = text.find(kVersionKey);
    if (key == std::string_view::npos) {
        return {};
    }
    const std::string_view line = text.substr(key, text.find('\n', key) - key);
    const auto colon = line.find(':');
    return colon == std::string_view::npos ? std::string{} : std::string(Trimmed(line.substr(colon + 1)));
}

Scenario::Text TextFrom(std::string contents) {
    // Shared, because a copy of the function must not copy a report of a gigabyte.
    auto held = std::make_shared<const std::string>(std::move(contents));
    return [held](std::ostream& out) { out.write(held->data(), static_cast<std::streamsize>(held->size())); };
}

}  // namespace

Scenario::Scenario(std::vector<fs::path> folders) : m_Folders(std::move(folders)) {
    for (const fs::path& folder : m_Folders) {
        std::error_code error;
        if (!fs::is_directory(folder, error)) {
            throw ScenarioError(kExitNoScenario,
                                folder.string() + ": no such scenario folder; name one with VDKSIM_SCENARIO");
        }
    }
    if (const auto contents = Contents(kServerFile)) {
        m_MadeUp.emplace(ReadShape(Find(kServerFile), *contents));
        m_Version = m_MadeUp->GetShape().version;
    }
    if (const auto contents = Contents("v.txt")) {
        m_Version = VersionIn(*contents);
    }
}

Instructions Scenario::InstructionsFor(const Command& command) const {
    for (const std::string& name : {command.FileStem() + ".do", std::string(kInstructionsForAll)}) {
        if (const fs::path path = Find(name); fs::exists(path)) {
            return Instructions::FromFile(path);
        }
    }
    return {};
}

std::optional<Scenario::Text> Scenario::TextOf(const Command& command) const {
    if (auto text = OwnText(command)) {
        return text;
    }
    if (m_MadeUp) {
        if (auto text = MadeUpText(command)) {
            return text;
        }
    }
    // Instructions alone make a command that prints nothing.
    if (fs::exists(Find(command.FileStem() + ".do"))) {
        return TextFrom({});
    }
    if (command.kind == Command::Kind::Version) {
        throw ScenarioError(kExitNoScenario, Find("v.txt").string() + ": missing");
    }
    if (command.kind == Command::Kind::Controllers && !command.controller) {
        return AllControllers();
    }
    return std::nullopt;
}

fs::path Scenario::Find(const std::string& name) const {
    for (const fs::path& folder : m_Folders) {
        if (fs::exists(folder / name)) {
            return folder / name;
        }
    }
    return m_Folders.back() / name;
}

std::optional<std::string> Scenario::Contents(const std::string& name) const {
    const fs::path path = Find(name);
    if (!fs::exists(path)) {
        return std::nullopt;
    }
    std::error_code error;
    const auto size = fs::file_size(path, error);
    std::string contents(error ? 0 : size, '\0');
    std::ifstream in(path, std::ios::binary);
    if (error || !in.read(contents.data(), static_cast<std::streamsize>(contents.size()))) {
        throw ScenarioError(kExitNoScenario, path.string() + ": cannot be read");
    }
    return contents;
}

std::optional<Scenario::Text> Scenario::OwnText(const Command& command) const {
    if (auto contents = Contents(command.FileStem() + ".txt")) {
        return TextFrom(std::move(*contents));
    }
    if (!command.withoutSmart && !command.drive) {
        return std::nullopt;
    }
    Command whole = command;
    whole.withoutSmart = false;
    whole.drive.reset();
    const auto contents = Contents(whole.FileStem() + ".txt");
    if (!contents) {
        return std::nullopt;
    }
    if (!command.drive) {
        return TextFrom(WithoutSmart(*contents));
    }
    auto drive = DriveIn(*contents, *command.drive);
    return drive ? std::optional(TextFrom(std::move(*drive))) : std::nullopt;
}

std::optional<Scenario::Text> Scenario::MadeUpText(const Command& command) const {
    const MadeUpServer& server = *m_MadeUp;
    if (command.kind == Command::Kind::Version) {
        return [server](std::ostream& out) { server.WriteVersion(out); };
    }
    if (!command.controller || *command.controller >= server.GetShape().controllers) {
        return std::nullopt;
    }
    const std::uint32_t controller = *command.controller;
    switch (command.kind) {
        case Command::Kind::Controllers:
            return [=](std::ostream& out) { server.WriteController(out, controller); };
        case Command::Kind::LogicalDrives:
            return [=](std::ostream& out) { server.WriteLogicalDrives(out, controller); };
        default:
            break;
    }
    if (!command.drive) {
        const bool withSmart = !command.withoutSmart;
        return [=](std::ostream& out) { server.WriteDrives(out, controller, withSmart); };
    }
    const auto number = server.DriveAt(*command.drive);
    if (!number) {
        return std::nullopt;
    }
    return [=](std::ostream& out) { server.WriteDrive(out, controller, *number); };
}

// One by one while they are printed: a made-up server may have very many, of which the reader takes few.
Scenario::Text Scenario::AllControllers() const {
    return [scenario = *this](std::ostream& out) {
        Command one;
        one.kind = Command::Kind::Controllers;
        for (one.controller = 0; out; ++*one.controller) {
            if (const auto contents = scenario.Contents(one.FileStem() + ".txt")) {
                out << *contents;
                // The next controller's first line must not grow onto this one's last.
                if (!contents->empty() && contents->back() != '\n') {
                    out << '\n';
                }
            } else if (const auto madeUp = scenario.m_MadeUp ? scenario.MadeUpText(one) : std::nullopt) {
                (*madeUp)(out);
            } else {
                break;
            }
        }
        if (*one.controller == 0) {
            out << "No controller is present.\n";
        }
    };
}

}  // namespace vdksim
