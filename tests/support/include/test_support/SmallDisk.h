#pragma once

#include <string>

/// A disk for tests, for the process that calls alone: it is to be called in a child process. Throws
/// std::system_error.
namespace testsupport {

void Require(bool isDone, const char* what);

/// Puts a disk of that size in the folder's place: "size=1m".
void MountDisk(const std::string& folder, const char* options);

void MakeReadOnly(const std::string& folder);
void MakeWritable(const std::string& folder);

/// Takes all the room that is left.
void FillDisk(const std::string& path);

}  // namespace testsupport
