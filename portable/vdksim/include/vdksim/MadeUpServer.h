#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>

#include "vdksim/Command.h"

namespace vdksim {

// A server that exists only as three numbers: it makes up the reports that the tool would print on it, the
// same ones every time and in constant memory, so that a controller may have a million drives. Every 32
// drives are
//   24 drives in six RAID groups of four, 4 in a cache group,
//   a global spare, a dedicated spare, a replaced drive and one that is not used,
// with SAS and SATA drives group by group, and here and there one that is failed, offline, rebuilding or
// copying back. A plain value; its operations may be called from any thread. They stop early when the stream
// goes bad and otherwise have no failure of their own. Controllers and drives are counted from 0; numbers
// that the server does not have are the caller's mistake.
class MadeUpServer final {
  public:
    struct Shape {
        std::string version = "4.1";
        std::uint32_t controllers = 1;
        std::uint32_t drives = 8;  // of every controller
    };

    explicit MadeUpServer(Shape shape);

    [[nodiscard]] const Shape& GetShape() const { return m_Shape; }

    // The place of a drive, and the drive at a place: 24 slots an enclosure, the first one is 8.
    [[nodiscard]] static DriveAddress AddressOf(std::uint32_t drive);
    [[nodiscard]] std::optional<std::uint32_t> DriveAt(DriveAddress address) const;

    void WriteVersion(std::ostream& out) const;
    void WriteController(std::ostream& out, std::uint32_t controller) const;
    void WriteAllControllers(std::ostream& out) const;
    void WriteLogicalDrives(std::ostream& out, std::uint32_t controller) const;
    void WriteDrives(std::ostream& out, std::uint32_t controller, bool withSmart) const;
    // One drive with its SMART data.
    void WriteDrive(std::ostream& out, std::uint32_t controller, std::uint32_t drive) const;

  private:
    Shape m_Shape;
};

}  // namespace vdksim
