#pragma once

#include <cstddef>
#include <string>

namespace replay {

/// Answers that the driver gives in the framework's place: its definitions of Sleep,
/// CFileUtility::GetInstallPath and CVersionLog::Add come before those of the framework's libraries when the
/// module is bound. One thread.
struct FrameworkHooks {
    std::string m_RootPath;             ///< GetInstallPath(INSTALLPATH_ROOT)
    std::string m_CimPath;              ///< GetInstallPath(INSTALLPATH_CIM)
    std::size_t m_Pauses = 0;           ///< calls of Sleep(1000), which do not sleep
    std::size_t m_OtherPauses = 0;      ///< of any other length
    bool m_IsVersionLogBroken = false;  ///< the log throws, so that a provider is left without its wrapper
};

[[nodiscard]] FrameworkHooks& Hooks();

}  // namespace replay
