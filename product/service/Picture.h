#pragma once

#include "calls/Drives.h"
#include "inventory/Snapshot.h"

#include <optional>
#include <vector>

namespace service {

/// What the server looks like: its latest answer, with the SMART data that each of its drives told last. They
/// are asked for one by one, and stay with the drive as long as that stays in its slot.
class Picture final {
  public:
    /// Shown with the server's next answer. An answer that tells of no drive changes nothing.
    void SeeDrive(const calls::DrivePlace& place, inventory::Document document);

    /// The snapshot stays until the next answer.
    const inventory::Snapshot& SeeServer(inventory::Document document, const inventory::Criteria& criteria,
                                         std::chrono::system_clock::time_point now);

    /// Null before the first answer.
    [[nodiscard]] const inventory::Snapshot* Latest() const { return m_Latest ? &*m_Latest : nullptr; }

  private:
    std::optional<inventory::Snapshot> m_Latest;
    std::vector<inventory::DriveAnswer> m_News;  ///< since then
};

}  // namespace service
