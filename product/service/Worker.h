#pragma once

#include "basics/Descriptor.h"
#include "board/Messages.h"
#include "calls/Drives.h"
#include "inventory/Snapshot.h"

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>

namespace service {

/// What an inquiry has to know.
struct WorkerSettings {
    std::chrono::seconds timeLimit{0};
    std::optional<std::string> appKey = {};
    std::string scenario = {};            ///< for advice: what answers in this server's place; "" for none
    std::string history = {}, host = {};  ///< for clients who ask for what is remembered
};

/// What came of an inquiry: a document, or why there is none.
struct Answer {
    std::string document{};      ///< of a call that a client makes: the packed outcome
    std::string failure{};       ///< empty: the document is whole
    inventory::ToolRuns runs{};  ///< of the tool, behind the document
};

/// What is asked: the server, where there is nothing else; a drive; or what a client wants to have called.
struct Question {
    std::optional<calls::DrivePlace> drive{};
    std::optional<board::Call> call{};
};

/// One inquiry in processes of its own: one that asks the module, which may crash, hang or be killed, and one
/// that watches it, ends it with all that it started when its time is over, and removes what it leaves.
///
/// Nothing of it is owed when it is destroyed while it runs but that its process is waited for.
class Worker final {
  public:
    /// To be called while the process has one thread. Throws basics::Failure(Surroundings) when no process
    /// can be made.
    Worker(const WorkerSettings& settings, Question question);

    [[nodiscard]] pid_t Process() const { return m_Process; }

    [[nodiscard]] const Question& Asked() const { return m_Question; }

    /// Asks it to end, with all that it started: about a second.
    void Interrupt() const noexcept;

    /// To be called when the process has ended with that status.
    [[nodiscard]] Answer Take(int status) const;

  private:
    [[noreturn]] void Work(const WorkerSettings& settings) const noexcept;
    void CleanUp() const;
    [[nodiscard]] Answer AnswerOf(const WorkerSettings& settings) const;

    Question m_Question;
    std::string m_Name;  ///< of the folder that it has for files, up to what makes that unlike others
    basics::Descriptor m_Document, m_Failure, m_Runs;  ///< files in memory that are shared with the process
    pid_t m_Process = -1;
};

}  // namespace service
