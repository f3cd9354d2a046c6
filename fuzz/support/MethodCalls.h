#pragma once

#include <string_view>

namespace fuzzing {

/// Calls a method of the provider as the framework does, over the tool runs that the input scripts, and
/// requires of status, return value, reason, document and everything left behind what holds for every call.
///
/// The first section is the call: directives, and for "GetPDInfo" up to three words (controller, enclosure,
/// drive; a word that is missing is a parameter that is not set). Every other section is one run of the tool,
/// see `ScriptedTool`.
///
///     u N   the tool is gone from question N on       k N   a key is configured; with 1 the caller has it
///     r N   no item is made from item N on            l     there is no conversion library
///     R     the library makes no interface object
void CheckMethod(const char* method, std::string_view input);

}  // namespace fuzzing
