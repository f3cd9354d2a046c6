#include "ReadAccess.h"

#include "Schema.h"
#include "basics/Failure.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>

namespace history {
namespace {

namespace fs = std::filesystem;

bool HoldsAnything(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    return !error && size > 0;
}

}  // namespace

// What was committed last stands in a file beside the database, and who reads needs a third one, which says
// where. It is made where it is not there; in a folder where nothing may be written it cannot be. Then nobody
// writes either, or was killed while doing so and has left the second file.
ReadAccess::ReadAccess(const std::string& path) {
    try {
        m_Database = std::make_unique<Database>(path, Database::Mode::Read);
        (void)VersionOf(*m_Database);  // It is opened only when something is asked.
    } catch (const DatabaseError& error) {
        if (error.WhatKind() != DatabaseError::Kind::Unavailable || !HoldsAnything(path)) {
            throw;
        }
        m_IsLive = false;
        m_Database.reset();
        if (HoldsAnything(path + "-wal")) {
            OpenCopy(path);
        } else {
            m_Database = std::make_unique<Database>(path, Database::Mode::ReadAlone);
            (void)VersionOf(*m_Database);
        }
    }
}

void ReadAccess::OpenCopy(const std::string& path) {
    m_Copy = std::make_unique<Folder>();
    const std::string copy = (m_Copy->Path() / "history.db").string();
    std::error_code error;
    for (const char* const beside : {"-wal", ""}) {
        fs::copy_file(path + beside, copy + beside, error);
        if (error) {
            throw DatabaseError(DatabaseError::Kind::Unavailable,
                                path + beside + " cannot be copied: " + error.message());
        }
    }
    m_Database = std::make_unique<Database>(copy, Database::Mode::Read);
    (void)VersionOf(*m_Database);
}

ReadAccess::Folder::Folder() {
    std::error_code error;
    std::string name = (fs::temp_directory_path(error) / "mngsrvraid-history-XXXXXX").string();
    if (error || ::mkdtemp(name.data()) == nullptr) {
        throw DatabaseError(DatabaseError::Kind::Unavailable,
                            "no room for a copy: " + (error ? error.message() : basics::ErrorText(errno)));
    }
    m_Path = name;
}

ReadAccess::Folder::~Folder() {
    std::error_code error;  // What cannot be removed is left to the system's own tidying.
    fs::remove_all(m_Path, error);
}

}  // namespace history
