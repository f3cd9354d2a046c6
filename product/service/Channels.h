#pragma once

#include "telling/Channel.h"

#include <vector>

namespace service {

class Section;

/// The channels of a configuration, [[channel]]: the journal alone where none is named. What is wrong with
/// them is noted in the section's problems.
[[nodiscard]] std::vector<telling::Channel> TakeChannels(Section& file);

}  // namespace service
