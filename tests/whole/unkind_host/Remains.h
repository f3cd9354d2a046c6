#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace unkindhost {

/// Numbers of the open descriptors. Opens none itself.
[[nodiscard]] std::set<int> OpenDescriptors();

/// Whether a file of that name is mapped, as a loaded library is.
[[nodiscard]] bool IsMapped(const std::string& fileName);

/// What calls that are over must not leave behind, one line each; "" when there is nothing. `before` are the
/// descriptors that were open before the calls.
[[nodiscard]] std::string Remains(const std::set<int>& before, const std::filesystem::path& installRoot);

}  // namespace unkindhost
