#include "FrameworkHooks.h"

#include "qel/CFileUtility.h"
#include "qel/QelWindows.h"
#include "qel/portable/CVersionLog.h"

#include <stdexcept>

namespace replay {

FrameworkHooks& Hooks() {
    static FrameworkHooks hooks;
    return hooks;
}

}  // namespace replay

void Sleep(DWORD milliseconds) {
    constexpr DWORD kPause = 1000;
    ++(milliseconds == kPause ? replay::Hooks().m_Pauses : replay::Hooks().m_OtherPauses);
}

std::string CFileUtility::GetInstallPath(int kind) {
    switch (kind) {
        case INSTALLPATH_ROOT:
            return replay::Hooks().m_RootPath;
        case INSTALLPATH_CIM:
            return replay::Hooks().m_CimPath;
        default:
            throw std::logic_error("an install path of unknown kind");
    }
}

void CVersionLog::Add(Entry /*entry*/) {
    if (replay::Hooks().m_IsVersionLogBroken) {
        throw std::runtime_error("the version log is broken");
    }
}
