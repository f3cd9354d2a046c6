#pragma once

#include "Element.h"
#include "Look.h"
#include "inventory/Snapshot.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace views::html {

// The parts of the page, each with what it needs of the whole.

/// Where the parts stand on the page, and what is not well with the drives. Leads into the server that it was
/// made from.
class Places final {
  public:
    Places(const inventory::Server& server, const inventory::Health& health);

    // Anchors: "c0", "u0-1", "g0-2", "l0-2-1", and "d0-3" of a drive's slot.
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller) const;
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller,
                                       const inventory::BackupUnit& unit) const;
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller,
                                       const inventory::Group& group) const;
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller, const inventory::Group& group,
                                       const inventory::LogicalDrive& drive) const;
    [[nodiscard]] std::string AnchorOf(const inventory::Controller& controller,
                                       const inventory::Drive& drive) const;

    /// Of the part that a finding is about, or the nearest that it belongs to: a group names a drive that is
    /// not there. Empty where that cannot be told.
    [[nodiscard]] std::string AnchorOf(const inventory::Finding& finding) const;

    /// What a drive is or does, in a word; where it is not well, what is wrong.
    [[nodiscard]] std::string StateOf(const inventory::Controller& controller,
                                      const inventory::Drive& drive) const;

  private:
    void Add(const inventory::Controller& controller);

    const inventory::Server& m_Server;
    std::unordered_map<std::string, std::string> m_Anchors, m_Wrongs;
};

/// "ok", "busy", "accepted", "unknown", "warning", "critical": the class of what looks like that; empty where
/// it is plain.
[[nodiscard]] std::string_view ClassOf(Look look);
[[nodiscard]] std::string_view ClassOf(inventory::Level level);

/// A sign for people who see no colours, and a word for those who see no signs; nothing where it is plain.
void AddSign(Look look, Element page);
void AddSign(inventory::Level level, Element page);

/// The style sheet.
[[nodiscard]] std::string_view StyleSheet();

/// What needs attention.
void AddFindings(const inventory::Health& health, const Places& places, Element page);

/// A controller's enclosures with their slots.
void AddEnclosures(const inventory::Controller& controller, const Places& places, Element page);

/// A controller's groups with their logical drives, caches and members.
void AddGroups(const inventory::Controller& controller, const Places& places, Element page);

class DriveLinesOfPage;

/// A controller's drives in a table, with what is remembered of them.
void AddDrives(const inventory::Controller& controller, const Places& places, const DriveLinesOfPage& lines,
               Element page);

/// The SMART data of a controller's drives, where there are any.
void AddSmart(const inventory::Controller& controller, Element page);

}  // namespace views::html
