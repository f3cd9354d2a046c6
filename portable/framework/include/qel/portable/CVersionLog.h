#pragma once

#include "qel/QelExport.h"

#include <string>
#include <vector>

/// The provider modules that announced themselves in this process, each file once, in order of announcement.
/// Safe to use from any thread.
class QEL_API CVersionLog {
  public:
    struct Entry {
        std::string fileName;
        std::string category;
        std::string vendor;
        std::string version;
    };

    CVersionLog() = delete;

    static void Add(Entry entry);
    [[nodiscard]] static std::vector<Entry> Entries();
};
