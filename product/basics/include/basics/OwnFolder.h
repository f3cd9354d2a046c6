#pragma once

#include <filesystem>

namespace basics {

/// The folder that this process's program lies in, links followed: "/usr/lib/mngsrvraid/bin". What belongs
/// to the program lies beside it. It was asked for when the program began, since a private view of the file
/// system may hide it later. Throws basics::Failure(Surroundings) where it could not be found then: a program
/// of that name in the working directory is not ours.
[[nodiscard]] const std::filesystem::path& OwnFolder();

}  // namespace basics
