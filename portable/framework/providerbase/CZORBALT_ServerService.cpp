#include "qel/CZORBALT_ServerService.h"

#include "qel/CFileUtility.h"
#include "qel/CIWbemUtil.h"
#include "qel/QelException.h"
#include "qel/portable/CVersionLog.h"
#include "qel/portable/CWbemRepository.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace {

// Looks at every character of the right key, whatever was given, so that the time taken tells nothing.
bool IsSameKey(const std::string& right, const std::string& given) {
    unsigned difference = right.size() == given.size() ? 0U : 1U;
    for (std::size_t at = 0; at < right.size(); ++at) {
        const char other = at < given.size() ? given[at] : '\0';
        difference |= static_cast<unsigned>(right[at] ^ other);
    }
    return difference == 0;
}

}  // namespace

CZORBALT_ServerService::CZORBALT_ServerService(std::string category, std::string vendor, std::string version)
    : m_Category(std::move(category)),
      m_Vendor(std::move(vendor)),
      m_Version(std::move(version)),
      m_ObjectManager(&CWbemRepository::Process()) {}

CZORBALT_ServerService::~CZORBALT_ServerService() = default;

DWORD CZORBALT_ServerService::ExecMethodAsync(char* /*className*/, char* /*methodName*/, long /*flags*/,
                                              IWbemContext* /*context*/, IWbemClassObject* /*inParams*/,
                                              IWbemObjectSink* /*sink*/) {
    return WBEM_E_INVALID_METHOD;
}

bool CZORBALT_ServerService::HasOperatingAuthority(IWbemClassObject* inParams) const {
    const std::string right = GetOperatingAuthorityAppKey();
    std::string given;
    if (CIWbemUtil::getStringFromIWbemClassObject(inParams, APP_KEY_PROPERTY, &given) < 0) {
        return false;
    }
    return IsSameKey(right, given);
}

std::string CZORBALT_ServerService::GetOperatingAuthorityAppKey() const {
    const std::string root = CFileUtility::GetInstallPath(INSTALLPATH_ROOT);
    const std::string path = root + "/etc/app.key";
    std::error_code error;
    // Of the link itself, not of its target: a key file that leads nowhere is there and cannot be read.
    const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
    if (root.empty() || status.type() == std::filesystem::file_type::not_found) {
        return "";
    }
    std::ifstream file(path);
    std::string key;
    if (!file.is_open() || (!std::getline(file, key) && file.bad())) {
        throw QelException("the application key cannot be read: " + path);
    }
    key.erase(key.find_last_not_of(" \t\r\n") + 1);
    return key;
}

void CZORBALT_ServerService::writeDLLFileVersionLog(const char* fileName) const {
    CVersionLog::Add({fileName, m_Category, m_Vendor, m_Version});
}
