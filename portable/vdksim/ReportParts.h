#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "vdksim/Command.h"

// Parts of the report of a controller's drives, for the commands that ask for no more.
namespace vdksim {

// The report less its SMART sections: each reaches to the next title, the next drive or the end.
[[nodiscard]] std::string WithoutSmart(std::string_view report);

// The first drive that says that it is there ("Enclosure No. : 252", "Slot No. : 3"), from its header to the
// next one's or to the end.
[[nodiscard]] std::optional<std::string> DriveIn(std::string_view report, DriveAddress address);

}  // namespace vdksim
