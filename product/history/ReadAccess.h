#pragma once

#include "Database.h"

#include <filesystem>
#include <string>

namespace history {

/// A database that is open for reading, where necessary as a copy. Throws DatabaseError.
class ReadAccess final {
  public:
    explicit ReadAccess(const std::string& path);

    [[nodiscard]] Database& Opened() { return *m_Database; }

    /// Whether it shows what is written meanwhile.
    [[nodiscard]] bool IsLive() const { return m_IsLive; }

  private:
    /// A folder that goes with everything in it.
    class Folder final {
      public:
        Folder();
        ~Folder();
        Folder(const Folder&) = delete;
        Folder& operator=(const Folder&) = delete;
        [[nodiscard]] const std::filesystem::path& Path() const { return m_Path; }

      private:
        std::filesystem::path m_Path;
    };

    void OpenCopy(const std::string& path);

    std::unique_ptr<Folder> m_Copy;  // goes after the database in it
    std::unique_ptr<Database> m_Database;
    bool m_IsLive = true;
};

}  // namespace history
