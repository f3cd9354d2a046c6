#pragma once

#include "inventory/Server.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace inventory {

/// What is wrong with a part that nobody can tell from another of its name.
constexpr const char* kRepeated = "the document tells it more than once";

/// Whether what a controller's reports say of each other fits: what one names, another has to confirm, and
/// each has to be there to its end. What does not fit is told as words, such as "it is in RG3, which is not
/// reported"; nobody can know then how well the part is.
class CrossChecks final {
  public:
    /// The controller must live as long.
    explicit CrossChecks(const Controller& controller);

    [[nodiscard]] std::vector<std::string> OfController() const;
    [[nodiscard]] std::vector<std::string> Of(const Group& group) const;
    [[nodiscard]] std::vector<std::string> Of(const LogicalDrive& drive) const;
    [[nodiscard]] std::vector<std::string> Of(const Drive& drive) const;

    /// The place of the group that names the drive as its member, unless the drive names another one; else
    /// kNowhere.
    [[nodiscard]] std::size_t GroupNaming(const Drive& drive) const;

  private:
    [[nodiscard]] std::size_t PlaceOf(const Drive& drive) const;
    void AddMembership(const Drive& drive, std::vector<std::string>& wrongs) const;

    using Counts = std::unordered_map<std::string_view, std::size_t>;

    const Controller& m_Controller;
    std::unordered_map<std::string_view, std::size_t> m_LogicalDrives;  ///< their groups' places, by number
    std::vector<std::vector<std::size_t>> m_NamedBy;  ///< of each drive: the places of groups
    Counts m_LogicalDriveCounts, m_GroupCounts, m_DriveCounts;
    std::unordered_map<std::string, std::size_t> m_SlotCounts;
};

}  // namespace inventory
