#pragma once

#include "Kinds.h"

#include <functional>
#include <string_view>

namespace capture {

/// Takes a kind and the part of the text that is of it.
using SeeShape = std::function<void(Kind kind, std::string_view part)>;

/// Finds what is known by its shape in a line, whatever stands before it:
///
///     mail addresses         raid@example.com
///     MAC addresses          00:1b:44:11:3a:b7, 00-1B-44-11-3A-B7
///     world-wide names       50:00:c5:00:a1:b2:c3:d4
///     UUIDs                  3f2504e0-4f89-11d3-9a0c-0305e82c3301
///     IPv6 addresses         fe80::21b:44ff:fe11:3ab7
///     IPv4 addresses         192.168.7.21
///
/// Versions have four numbers, too. So what could be an IPv4 address is none where `isAboutVersions`, where
/// its first number is below 10, where a number has zeros before it, and next to a letter, a dash or another
/// dot.
void FindShapes(std::string_view line, bool isAboutVersions, const SeeShape& see);

/// Whether the line, or the title above it, speaks of versions: "Firmware Version : 10.2.0.1".
[[nodiscard]] bool SpeaksOfVersions(std::string_view line);

/// Whether the text is nothing but a number of 12 hexadecimal digits or more, in groups or not:
/// "0x5000C500A1B2C3D4".
[[nodiscard]] bool IsLongHexadecimal(std::string_view text);

}  // namespace capture
