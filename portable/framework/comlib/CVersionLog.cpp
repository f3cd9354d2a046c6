#include "qel/portable/CVersionLog.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace {

struct Log {
    std::mutex mutex;
    std::vector<CVersionLog::Entry> entries;
};

Log& ProcessLog() {
    static Log log;
    return log;
}

}  // namespace

void CVersionLog::Add(Entry entry) {
    Log& log = ProcessLog();
    const std::lock_guard lock(log.mutex);
    const auto isKnown = [&entry](const Entry& known) { return known.fileName == entry.fileName; };
    // Once a file: a host may make and drop provider objects for ever.
    if (std::none_of(log.entries.begin(), log.entries.end(), isKnown)) {
        log.entries.push_back(std::move(entry));
    }
}

std::vector<CVersionLog::Entry> CVersionLog::Entries() {
    Log& log = ProcessLog();
    const std::lock_guard lock(log.mutex);
    return log.entries;
}
