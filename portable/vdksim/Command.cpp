#include "vdksim/Command.h"

#include <algorithm>
#include <limits>

#include "Words.h"

namespace vdksim {

namespace {

constexpr std::string_view kControllerHead = "-a";
constexpr std::string_view kDriveHead = "-pd[";

// "-a0": the digits behind "-a".
std::optional<std::uint32_t> ControllerOf(std::string_view word) {
    if (!word.starts_with(kControllerHead)) {
        return std::nullopt;
    }
    return WholeNumber<std::uint32_t>(word.substr(kControllerHead.size()));
}

// "-pd[252:3]"
std::optional<DriveAddress> DriveOf(std::string_view word) {
    if (!word.starts_with(kDriveHead) || !word.ends_with(']')) {
        return std::nullopt;
    }
    word = word.substr(kDriveHead.size(), word.size() - kDriveHead.size() - 1);
    const auto colon = word.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    const auto enclosure = WholeNumber<std::uint32_t>(word.substr(0, colon));
    const auto slot = WholeNumber<std::uint32_t>(word.substr(colon + 1));
    if (!enclosure || !slot) {
        return std::nullopt;
    }
    return DriveAddress{*enclosure, *slot};
}

// Takes the words one by one, each as soon as the caller has found it good.
class WordReader final {
  public:
    explicit WordReader(const std::vector<std::string>& words) : m_Words(words) {}

    [[nodiscard]] bool AtEnd() const { return m_Next == m_Words.size(); }
    [[nodiscard]] std::string_view Word() const { return AtEnd() ? std::string_view{} : m_Words[m_Next]; }
    void Accept() { ++m_Next; }

    bool AcceptIf(std::string_view word) {
        const bool same = !AtEnd() && Word() == word;
        m_Next += same ? 1U : 0U;
        return same;
    }

    [[nodiscard]] Rejected Reject() const {
        if (!AtEnd()) {
            return {m_Words[m_Next]};
        }
        return {m_Words.empty() ? std::string{} : m_Words.back()};
    }

  private:
    const std::vector<std::string>& m_Words;
    std::size_t m_Next = 0;
};

// Reads the words of the command itself; false at the first that does not fit.
bool ReadCommand(WordReader& words, bool takesNoSmart, Command& command) {
    if (words.AcceptIf("-v")) {
        command.kind = Command::Kind::Version;
        return true;
    }
    if (words.AcceptIf("-ctrlinfo")) {
        command.kind = Command::Kind::Controllers;
        if (words.AcceptIf("-aAll")) {
            return true;
        }
    } else if (words.AcceptIf("-ldpdinfo")) {
        command.kind = Command::Kind::LogicalDrives;
    } else if (words.AcceptIf("-pdinfo")) {
        command.kind = Command::Kind::Drives;
        if (takesNoSmart && words.AcceptIf("-nosmart")) {
            command.withoutSmart = true;
        } else if (command.drive = DriveOf(words.Word()); command.drive) {
            words.Accept();
        }
    } else {
        return false;
    }
    command.controller = ControllerOf(words.Word());
    if (!command.controller) {
        return false;
    }
    words.Accept();
    return true;
}

}  // namespace

std::string Command::FileStem() const {
    std::string stem;
    switch (kind) {
        case Kind::Version:
            return "v";
        case Kind::Controllers:
            stem = "ctrlinfo";
            break;
        case Kind::LogicalDrives:
            stem = "ldpdinfo";
            break;
        case Kind::Drives:
            stem = "pdinfo";
            break;
    }
    if (withoutSmart) {
        stem += "_nosmart";
    }
    if (drive) {
        stem += "_pd" + std::to_string(drive->enclosure) + "." + std::to_string(drive->slot);
    }
    return stem + "_a" + (controller ? std::to_string(*controller) : "All");
}

std::variant<Command, Rejected> ParseCommand(const std::vector<std::string>& arguments, bool takesNoSmart) {
    WordReader words(arguments);
    Command command;
    if (!ReadCommand(words, takesNoSmart, command) || !words.AtEnd()) {
        return words.Reject();
    }
    return command;
}

bool VersionTakesNoSmart(std::string_view version) {
    const auto dot = version.find('.');
    if (dot == std::string_view::npos || version.find('.', dot + 1) != std::string_view::npos) {
        return false;
    }
    std::string_view major = version.substr(0, dot);
    major = major.substr(0, std::min(major.find_first_not_of("0123456789"), major.size()));
    const std::uint32_t tooBigToRead = major.empty() ? 0 : std::numeric_limits<std::uint32_t>::max();
    return WholeNumber<std::uint32_t>(major).value_or(tooBigToRead) >= 4;
}

}  // namespace vdksim
