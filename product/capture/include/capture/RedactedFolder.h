#pragma once

#include <string>
#include <vector>

namespace capture {

/// What is to be redacted afterwards.
struct RedactRequest {
    std::string folder;                   ///< a capture, or another scenario
    std::vector<std::string> words = {};  ///< to be replaced as well
    std::string host = {};                ///< what the server is called; "" where that is not known
};

/// Redacts a capture that was made without, in its folder; without the tool and without the module. Returns
/// what was replaced by what, in lines for people.
///
/// Nothing is touched before everything has been read and redacted in memory, and every file is replaced as a
/// whole. While that goes on the folder is marked as incomplete. Where it is broken off, the marked folder
/// holds either all files as they were, or all that is needed to go on: the next call does.
///
/// Throws basics::Failure(Surroundings) where the folder is no scenario, is an incomplete capture, holds
/// files that are not of a scenario (nobody knows what they tell), or cannot be read or written.
[[nodiscard]] std::string RedactFolder(const RedactRequest& request);

}  // namespace capture
