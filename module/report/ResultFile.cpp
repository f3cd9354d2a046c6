#include "ResultFile.h"

#include "itemconv/MsraidTrace.h"

#include "qel/QelWindows.h"

#include <sys/stat.h>

#include <utility>

ResultFile::ResultFile(std::string path) : m_Path(std::move(path)) {}

ResultFile::~ResultFile() {
    if (m_IsOurs) {
        DeleteFileA(m_Path.c_str());
    }
}

void ResultFile::Delete() {
    m_IsOurs = false;
    if (DeleteFileA(m_Path.c_str()) == 0) {
        CTraceUtility::WriteDebug(msraid::kCategory, msraid::kFailure, "Failed to delete file(%s).",
                                  m_Path.c_str());
    }
}

bool IsPipe(const std::string& path) noexcept {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

std::ifstream OpenReport(const std::string& path) {
    std::ifstream file;
    if (IsPipe(path)) {
        file.setstate(std::ios::failbit);
    } else {
        file.open(path);
    }
    return file;
}
