#pragma once

#include "inventory/Snapshot.h"

#include <chrono>
#include <memory>
#include <vector>

namespace board {

/// What the server looks like: its latest answer, with the SMART data that each of its drives told last. They
/// are asked for one by one, and stay with the drive as long as that stays in its slot. One thread.
class Picture final {
  public:
    /// Shown with the server's next answer. An answer that tells of no drive changes nothing.
    void SeeDrive(inventory::DriveAnswer answer);

    /// Of the snapshot before, which somebody else may still hold, nothing is left but the server's own
    /// answer and its health.
    const inventory::Snapshot& SeeServer(inventory::Document document, const inventory::Criteria& criteria,
                                         std::chrono::system_clock::time_point now);

    /// Null before the first answer.
    [[nodiscard]] const std::shared_ptr<inventory::Snapshot>& Latest() const { return m_Latest; }

  private:
    std::shared_ptr<inventory::Snapshot> m_Latest;
    std::vector<inventory::DriveAnswer> m_News;  ///< since then
};

}  // namespace board
