#pragma once

#include "Element.h"
#include "inventory/Snapshot.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace views::html {

// The parts of the page, each with what it needs of the whole.

/// Where the drives stand on the page, and what is not well with them. Leads into the server that it was made
/// from.
class DrivePlaces final {
  public:
    DrivePlaces(const inventory::Server& server, const inventory::Health& health);

    /// The anchor of a drive's slot: "d0-3".
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller,
                                       const inventory::Drive& drive) const;
    /// Of the drive that a finding is about; empty where it is about none.
    [[nodiscard]] std::string AnchorOf(const inventory::Finding& finding) const;

    /// What a drive is or does, in a word; where it is not well, what is wrong.
    [[nodiscard]] std::string StateOf(const inventory::Controller& controller,
                                      const inventory::Drive& drive) const;

  private:
    const inventory::Server& m_Server;
    std::unordered_map<std::string, std::string> m_Anchors, m_Wrongs;
};

/// "ok", "unknown", "warning", "critical": the class of what is in that level.
[[nodiscard]] std::string_view ClassOf(inventory::Level level);

/// A sign for people who see no colours, and the level's word for those who see no signs.
void AddSign(inventory::Level level, Element page);

/// The style sheet.
[[nodiscard]] std::string_view StyleSheet();

/// What needs attention.
void AddFindings(const inventory::Health& health, const DrivePlaces& places, Element page);

/// A controller's enclosures with their slots.
void AddEnclosures(const inventory::Controller& controller, const DrivePlaces& places, Element page);

/// A controller's groups with their logical drives, caches and members.
void AddGroups(const inventory::Controller& controller, const DrivePlaces& places, Element page);

/// A controller's drives in a table.
void AddDrives(const inventory::Controller& controller, const DrivePlaces& places, Element page);

/// The SMART data of a controller's drives, where there are any.
void AddSmart(const inventory::Controller& controller, Element page);

}  // namespace views::html
