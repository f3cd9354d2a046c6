#pragma once

#include "qel/QelExport.h"

#include <string>

enum InstallPathKind : int {
    INSTALLPATH_ROOT = 0,  ///< the install root
    INSTALLPATH_CIM = 4,   ///< its cim/: provider modules and what they load
};

/// Files and places of the installation. Safe to use from any thread; may throw std::bad_alloc.
class QEL_API CFileUtility {
  public:
    CFileUtility() = delete;

    /// Path of one kind, without a slash at its end (but for the root directory itself), or "" where it is
    /// unknown. The root is the value of the environment variable ZORBALT_INSTALL_DIR (set but empty: no path
    /// of any kind is known), else the directory above the one that libqel_ComLib.so was loaded from.
    static std::string GetInstallPath(int kind);

    /// Whether something other than a directory stands under that path.
    static bool IsFileExist(const std::string& path);
};
