#pragma once

#include "Database.h"

#include <string>

namespace history {

/// What the database's tables look like. A file of an earlier version is brought here step by step.
inline constexpr int kSchemaVersion = 2;

/// Marks the file as one of ours.
inline constexpr int kApplicationId = 0x52414944;  // "RAID"

enum class FileKind {
    New,      ///< nothing is in it
    Ours,     ///< of this version or an earlier one
    Newer,    ///< of a version that is not known here
    Foreign,  ///< somebody else's
};

[[nodiscard]] FileKind KindOf(Database& database);
[[nodiscard]] std::int64_t VersionOf(Database& database);

/// Makes the tables, or brings those of an earlier version to this one: all of the steps or none. `last` is
/// the version to stop at.
void Upgrade(Database& database, int last = kSchemaVersion);

/// What is wrong with the file, in words; empty where it is whole.
[[nodiscard]] std::string DamageOf(Database& database);

// Names of marks.
inline constexpr const char* kAnswered = "answered";  ///< when the server last answered
inline constexpr const char* kTidied = "tidied";      ///< the time that old things are measured by

}  // namespace history
