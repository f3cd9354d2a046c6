#include "capture/RedactedFolder.h"

#include "Folder.h"
#include "Readme.h"
#include "RedactedTexts.h"
#include "basics/Failure.h"
#include "basics/HeldSignals.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "basics/Words.h"
#include "scenario/ScenarioFolder.h"

#include <algorithm>
#include <cerrno>

namespace capture {
namespace {

using basics::FailSurroundings;
using scenario::kIncompleteMark;
using scenario::kUnderRedaction;

// From when it is there, what is staged takes the place of the old files.
constexpr const char* kStagedMark = ".redacted";
constexpr std::string_view kStagedEnd = ".redacted";

/// ".v.txt.redacted"
std::string StagedName(const std::string& name) {
    return "." + name + std::string(kStagedEnd);
}

bool IsStaged(const std::string& name) {
    return name != kStagedMark && name.starts_with('.') && name.ends_with(kStagedEnd);
}

std::string NameOfStaged(const std::string& staged) {
    return staged.substr(1, staged.size() - 1 - kStagedEnd.size());
}

class Redactor final {
  public:
    explicit Redactor(const RedactRequest& request)
        : m_Request(request), m_Shown(basics::OneLine(request.folder)), m_Folder(request.folder) {}

    [[nodiscard]] std::string Run();

  private:
    [[nodiscard]] std::string PathOf(const std::string& name) const { return m_Request.folder + "/" + name; }
    void Claim() const;
    void GoOn() const;
    void CheckNames(const std::vector<std::string>& names) const;
    void Replace(const Texts& changed) const;
    void Stage(const Texts& changed) const;
    void PutInPlace() const;
    void RemoveStaged() const;
    void Need(int error) const;

    const RedactRequest& m_Request;
    std::string m_Shown;
    Folder m_Folder;
};

std::string Redactor::Run() {
    Claim();
    GoOn();
    const std::vector<std::string> names = m_Folder.Names();
    CheckNames(names);
    Texts texts;
    for (const std::string& name : names) {
        texts[name] = basics::ReadFile(PathOf(name));
    }
    const Texts before = texts;
    const Replacements replaced = RedactTexts(texts, {.words = m_Request.words, .host = m_Request.host});
    Texts changed;
    std::set_difference(texts.begin(), texts.end(), before.begin(), before.end(),
                        std::inserter(changed, changed.end()));
    if (changed.empty()) {
        return "nothing is left to redact in " + m_Shown + "\n";
    }
    Replace(changed);
    return "redacted in " + m_Shown + ": " + std::to_string(changed.size()) + " of " +
           std::to_string(texts.size()) + " files\n" + ListForScreen(replaced);
}

void Redactor::Claim() const {
    if (!m_Folder.IsOpen()) {
        FailSurroundings(m_Shown + " cannot be redacted: " + basics::ErrorText(errno) +
                         "; name the folder of a capture");
    }
    if (!m_Folder.Claim()) {
        FailSurroundings(m_Shown + " cannot be redacted: another process is writing to it; wait for its end");
    }
}

/// With what an earlier redaction has left.
void Redactor::GoOn() const {
    if (!m_Folder.Has(kIncompleteMark)) {
        return;
    }
    if (!m_Folder.IsFile(kIncompleteMark) || basics::ReadFile(PathOf(kIncompleteMark)) != kUnderRedaction) {
        FailSurroundings(m_Shown + " is an incomplete capture; make another one, with --redact");
    }
    const basics::HeldSignals held;
    if (m_Folder.Has(kStagedMark)) {
        PutInPlace();
    } else {
        RemoveStaged();
        Need(m_Folder.Remove(kIncompleteMark));
    }
}

void Redactor::CheckNames(const std::vector<std::string>& names) const {
    if (!m_Folder.Has("v.txt") && !m_Folder.Has("server.conf")) {
        FailSurroundings(m_Shown + " is no capture and no scenario: it has neither v.txt nor server.conf");
    }
    std::vector<std::string> others;
    std::copy_if(names.begin(), names.end(), std::back_inserter(others), [this](const std::string& name) {
        return !m_Folder.IsFile(name) || (name != kReadme && !IsScenarioFileName(name));
    });
    if (!others.empty()) {
        FailSurroundings(m_Shown +
                         " is not redacted: it holds what is not of a capture, and may tell anything: " +
                         basics::OneLine(basics::Joined(others)) + "; move that elsewhere");
    }
}

void Redactor::Replace(const Texts& changed) const {
    const basics::HeldSignals held;
    try {
        Stage(changed);
    } catch (const basics::Failure& failure) {
        RemoveStaged();
        (void)m_Folder.Remove(kIncompleteMark);
        FailSurroundings(std::string(failure.what()) + "; nothing in it was changed");
    }
    PutInPlace();
}

void Redactor::Stage(const Texts& changed) const {
    Need(m_Folder.Write(kIncompleteMark, kUnderRedaction));
    for (const auto& [name, text] : changed) {
        Need(m_Folder.Write(StagedName(name), text, name));
    }
    Need(m_Folder.Sync());
    Need(m_Folder.Write(kStagedMark, ""));
    Need(m_Folder.Sync());
}

void Redactor::PutInPlace() const {
    for (const std::string& name : m_Folder.Names()) {
        if (IsStaged(name)) {
            Need(m_Folder.Rename(name, NameOfStaged(name)));
        }
    }
    Need(m_Folder.Sync());
    Need(m_Folder.Remove(kStagedMark));
    Need(m_Folder.Remove(kIncompleteMark));
    Need(m_Folder.Sync());
}

void Redactor::RemoveStaged() const {
    (void)m_Folder.Remove(kStagedMark);
    for (const std::string& name : m_Folder.Names()) {
        if (IsStaged(name)) {
            (void)m_Folder.Remove(name);
        }
    }
}

void Redactor::Need(int error) const {
    if (error != 0) {
        FailSurroundings("the redaction cannot be written to " + m_Shown + ": " + basics::ErrorText(error));
    }
}

}  // namespace

std::string RedactFolder(const RedactRequest& request) {
    return Redactor(request).Run();
}

}  // namespace capture
