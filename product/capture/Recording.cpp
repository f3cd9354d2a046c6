#include "Recording.h"

#include "basics/Failure.h"
#include "basics/OwnFolder.h"
#include "recorder/RunFile.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace capture {
namespace {

namespace fs = std::filesystem;

fs::path RecorderFolder() {
    return basics::OwnFolder().parent_path() / "libexec" / "recorder";
}

void Set(const char* name, const std::string& value) {
    if (::setenv(name, value.c_str(), 1) != 0) {
        throw std::bad_alloc();
    }
}

// "/opt/zorbalt/vdk/cli/vdkcli -v": what is behind the program.
std::string ArgumentsOf(const std::string& command) {
    const std::size_t blank = command.find(' ');
    return blank == std::string::npos ? "" : command.substr(blank + 1);
}

RecordedCommand* Find(std::vector<RecordedCommand>& commands, const std::string& arguments) {
    const auto found = std::find_if(commands.begin(), commands.end(), [&](const RecordedCommand& command) {
        return command.arguments == arguments;
    });
    return found == commands.end() ? nullptr : &*found;
}

}  // namespace

Recording::Recording(fs::path folder) : m_Folder(std::move(folder)) {
    const fs::path recorder = RecorderFolder();
    if (::access((recorder / "sh").c_str(), X_OK) != 0) {
        basics::FailSurroundings("the recorder " + (recorder / "sh").string() +
                                 " cannot be run: " + basics::ErrorText(errno) + "; check the installation");
    }
    const char* const path = std::getenv("PATH");
    if (path != nullptr) {
        Set("MNGSRVRAID_RECORD_PATH", path);
    }
    Set("PATH", path == nullptr ? recorder.string() : recorder.string() + ":" + path);
    Set("MNGSRVRAID_RECORD", m_Folder.string());
}

void Recording::Take() {
    std::vector<RecordedCommand> call;
    for (const fs::path& file : recorder::RunFiles(m_Folder)) {
        if (auto run = recorder::ReadRun(file)) {
            Add(call, ArgumentsOf(run->command), run->status, std::move(run->output));
        } else {
            m_Notes.emplace_back("the record of a run cannot be read");
        }
        fs::remove(file);
    }
    for (RecordedCommand& command : call) {
        Merge(std::move(command));
    }
    for (const fs::path& file : recorder::NoteFiles(m_Folder)) {
        std::ifstream note(file);
        std::string line;
        std::getline(note, line);
        m_Notes.push_back(line);
        fs::remove(file);
    }
}

void Recording::Add(std::vector<RecordedCommand>& call, const std::string& command, int status,
                    std::string output) {
    RecordedCommand* entry = Find(call, command);
    if (entry == nullptr) {
        entry = &call.emplace_back(RecordedCommand{.arguments = command});
    }
    const bool isGood = status == 0;
    entry->isChanged |= isGood && entry->hasGone && entry->output != output;
    if (isGood || !entry->hasGone) {
        entry->output = std::move(output);
    }
    entry->hasGone |= isGood;
    entry->statuses.push_back(status);
}

void Recording::Merge(RecordedCommand command) {
    RecordedCommand* const known = Find(m_Commands, command.arguments);
    if (known == nullptr) {
        m_Commands.push_back(std::move(command));
        return;
    }
    const bool isSameEnd = known->statuses.back() == command.statuses.back();
    const bool isSameText = known->hasGone != command.hasGone || known->output == command.output;
    known->isChanged |= command.isChanged || !isSameEnd || !isSameText;
    if (command.hasGone || !known->hasGone) {
        known->output = std::move(command.output);
    }
    known->hasGone |= command.hasGone;
}

}  // namespace capture
