#pragma once

#include <string>
#include <vector>

namespace wbem::test {

/// What a MOF file declares, a line for each thing and without the texts for people:
///
///     class ZORBALT_MngSrvRaid
///     [Static] uint32 GetInfo([In(false), Out] string XmlData)
///     [Key] string InstanceID
///
/// Comments are left out. Reads what that language needs for classes of this kind, and throws
/// std::runtime_error for anything else.
[[nodiscard]] std::vector<std::string> DeclarationsIn(const std::string& mof);

}  // namespace wbem::test
