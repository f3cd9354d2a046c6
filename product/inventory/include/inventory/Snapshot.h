#pragma once

#include "inventory/Health.h"
#include "inventory/Server.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace inventory {

/// The tool's runs behind an answer, as far as they could be watched.
struct ToolRuns {
    std::size_t commands = 0;
    std::size_t failures = 0;    ///< commands that came to no good end
    std::size_t failedRuns = 0;  ///< runs that failed, those that another run mended included
    std::chrono::duration<double> duration{0};
};

/// The answer about one drive, SMART data included, with what was asked for.
struct DriveAnswer {
    std::string controller, enclosure, slot;
    Document document;
};

/// What a server told at one time, with what it comes to. Not copied; where it is moved, what leads into its
/// documents stays good.
class Snapshot final {
  public:
    /// `controller` is the one that a document about a single drive was asked for. An answer about a drive
    /// that is not there is kept, and changes nothing else.
    explicit Snapshot(Document document, const std::string& controller = "",
                      std::vector<DriveAnswer> answers = {}, const Criteria& criteria = {});
    Snapshot(Snapshot&&) = default;
    Snapshot& operator=(Snapshot&&) = default;
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() = default;

    [[nodiscard]] const Document& Main() const { return m_Document; }
    [[nodiscard]] const std::vector<DriveAnswer>& Answers() const { return m_Answers; }
    [[nodiscard]] const Server& TheServer() const { return m_Server; }
    [[nodiscard]] const Health& TheHealth() const { return m_Health; }

    /// The answers, for another snapshot; this one is of no use then.
    [[nodiscard]] std::vector<DriveAnswer> TakeAnswers() && { return std::move(m_Answers); }

    ToolRuns runs;
    /// When the server was asked; nothing where that is not known, of a saved document say.
    std::optional<std::chrono::system_clock::time_point> takenAt = std::chrono::system_clock::now();
    std::string host;  ///< what the server is called; empty where that is not known

  private:
    Document m_Document;
    std::vector<DriveAnswer> m_Answers;
    Server m_Server;
    Health m_Health;
};

}  // namespace inventory
