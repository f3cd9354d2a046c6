// Scenario folders of the simulator: a command line, server.conf, v.txt, the command's own instructions and
// text, any.do, the timeline, and what is noted of inquiries, a section each; an empty one is a file that is
// not there. Nothing is run: what the simulator would print is looked into.

#include "Scenario.h"
#include "Instructions.h"
#include "ScenarioError.h"
#include "State.h"
#include "Timeline.h"
#include "support/Input.h"
#include "support/Property.h"
#include "test_support/TempFolder.h"
#include "vdksim/Command.h"

#include <algorithm>
#include <optional>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace {

using fuzzing::Require;
using vdksim::Command;
using vdksim::Instructions;
using vdksim::Rejected;
using vdksim::Scenario;
using vdksim::ScenarioError;

constexpr std::size_t kMostPrinted = 4096;  // a made-up server may have billions of drives

/// Takes so much text and then goes bad, as a full disk does.
class Page final : public std::streambuf {
  public:
    [[nodiscard]] const std::string& Text() const { return m_Text; }

  protected:
    int_type overflow(int_type character) override {
        if (m_Text.size() >= kMostPrinted) {
            return traits_type::eof();
        }
        m_Text.push_back(traits_type::to_char_type(character));
        return character;
    }

  private:
    std::string m_Text;
};

std::string Printed(const Scenario::Text& text) {
    Page page;
    std::ostream out(&page);
    text(out);
    return page.Text();
}

std::string_view SectionOf(const fuzzing::Sections& sections, std::size_t number) {
    return number < sections.size() ? sections[number] : std::string_view();
}

/// The files of one case, which go with it.
class Folder final {
  public:
    ~Folder() {
        for (const std::string& name : m_Names) {
            std::filesystem::remove(Place() / name);
        }
    }
    Folder() = default;
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] static const std::filesystem::path& Place() {
        static const testsupport::TempFolder place;
        static const bool hasStages = std::filesystem::create_directory(place.Path() / "well") &&
                                      std::filesystem::create_directory(place.Path() / "failed");
        Require(hasStages, "there is room for stages");
        return place.Path();
    }

    void Write(const std::string& name, std::string_view text) {
        if (!text.empty()) {
            testsupport::WriteFile(Place() / name, std::string(text));
            m_Names.push_back(name);
        }
    }

  private:
    std::vector<std::string> m_Names;
};

void CheckInstructions(const Instructions& instructions) {
    constexpr int kMostStatus = 255;
    constexpr double kDay = 86400;
    const auto isStatus = [](int status) { return status >= 0 && status <= kMostStatus; };
    const auto isTime = [](Instructions::Seconds time) { return time.count() >= 0 && time.count() <= kDay; };
    Require(isStatus(instructions.failStatus) && isStatus(instructions.exitStatus.value_or(0)),
            "statuses are 0 to 255");
    Require(isTime(instructions.delay) && isTime(instructions.holdOutput), "times are a day at most");
    Require(instructions.signal >= 0 && instructions.signal < 32, "signals are those that end a process");
    Require(!instructions.marker || instructions.marker->find_first_of(" \t\r\n") == std::string::npos,
            "a marker's token is one word");
}

void CheckComplaint(const ScenarioError& error) {
    const std::string_view text = error.what();
    Require(error.Status() == vdksim::kExitBadScenario || error.Status() == vdksim::kExitNoScenario ||
                error.Status() == vdksim::kExitNoState,
            "a scenario that is at fault has a status of its own");
    Require(text.starts_with(Folder::Place().string()), "a complaint names its place");
    Require(text.find('\n') == std::string_view::npos, "a complaint is one line");
}

/// What the scenario is played from, which is also where its state is.
std::vector<std::filesystem::path> Folders() {
    const vdksim::State state(Folder::Place());
    std::vector<std::filesystem::path> folders = vdksim::FoldersOf(Folder::Place(), state, false);
    Require(folders.back() == Folder::Place() && folders.size() <= 2, "a scenario is played from its folder");
    Require(std::filesystem::is_directory(folders.front()), "a stage is there");
    return folders;
}

/// What the scenario says about the command, as a text that two readings can be compared by.
std::string Answer(const Command& command, std::string_view ownText) {
    const Scenario scenario(Folders());
    CheckInstructions(scenario.InstructionsFor(command));
    const std::optional<Scenario::Text> text = scenario.TextOf(command);
    if (!text) {
        Require(ownText.empty(), "a command that has a text is answered");
        return "refused";
    }
    std::string printed = Printed(*text);
    Require(Printed(*text) == printed, "a text is the same every time");
    if (!ownText.empty()) {
        Require(printed == ownText.substr(0, kMostPrinted), "a text is printed byte for byte");
    }
    return printed;
}

/// The same text without a file of that name, for the command that leaves SMART data out.
void CheckWithoutSmart(Command command, Folder& folder, std::string_view report) {
    command.withoutSmart = false;
    folder.Write(command.FileStem() + ".txt", report);
    command.withoutSmart = true;
    const std::string rest = Answer(command, "");
    Require(!rest.starts_with("### SMART Information ###") &&
                rest.find("\n### SMART Information ###") == std::string::npos,
            "no SMART section is left");
    Require(rest.size() <= report.size(), "nothing is added");
}

/// One drive of the same text.
void CheckOneDrive(const Command& command, Folder& folder, std::string_view report) {
    Command all = command;
    all.drive.reset();
    folder.Write(all.FileStem() + ".txt", report);
    const std::string drive = Answer(command, "");
    Require(drive == "refused" || report.find(drive) != std::string_view::npos,
            "a drive is a part of its report");
    Require(drive == "refused" || drive.empty() || drive.starts_with("PD"), "a drive begins with its header");
}

void Read(const fuzzing::Sections& sections) {
    std::vector<std::string> words;
    for (const std::string_view word : fuzzing::Split(sections.front(), ' ')) {
        words.emplace_back(word);
    }
    Folder folder;
    folder.Write("server.conf", SectionOf(sections, 1));
    folder.Write("v.txt", SectionOf(sections, 2));
    folder.Write("any.do", SectionOf(sections, 5));
    folder.Write("timeline", SectionOf(sections, 6));
    folder.Write("inquiries", SectionOf(sections, 7));
    const std::string version = Scenario(Folders()).Version();
    const auto parsed = vdksim::ParseCommand(words, vdksim::VersionTakesNoSmart(version));
    if (const auto* const rejected = std::get_if<Rejected>(&parsed)) {
        Require(std::find(words.begin(), words.end(), rejected->token) != words.end(),
                "the word that is rejected is one of the command's");
        return;
    }
    const Command& command = std::get<Command>(parsed);
    const bool isVersion = command.kind == Command::Kind::Version;
    const std::string_view ownText = SectionOf(sections, isVersion ? 2 : 4);
    if (command.withoutSmart && !ownText.empty()) {
        CheckWithoutSmart(command, folder, ownText);
    }
    if (command.drive && !ownText.empty() && SectionOf(sections, 1).empty()) {
        CheckOneDrive(command, folder, ownText);
    }
    folder.Write(command.FileStem() + ".txt", ownText);
    folder.Write(command.FileStem() + ".do", SectionOf(sections, 3));
    Require(Answer(command, ownText) == Answer(command, ownText), "the same folder gives the same answer");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        Read(fuzzing::Split(fuzzing::TextOf(data, size), fuzzing::kSectionEnd));
    } catch (const ScenarioError& error) {
        CheckComplaint(error);
    }
    return 0;
}
