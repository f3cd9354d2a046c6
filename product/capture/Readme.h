#pragma once

#include "Redaction.h"

#include <string>
#include <string_view>
#include <vector>

namespace capture {

inline constexpr const char* kReadme = "README.md";

/// What a capture's README.md tells. Texts may hold anything; each stays on one line.
struct Account {
    std::string host = {};      ///< "" where it is not known
    std::string scenario = {};  ///< what answered in this server's place; "" for none
    std::vector<std::string> controllers = {};
    std::vector<std::string> versions = {};  ///< of the tool
    std::size_t drives = 0;                  ///< that were asked for
    std::vector<std::string> failures = {};
    std::vector<std::string> changes = {};  ///< what is not as it was
    std::vector<std::string> missing = {};
};

/// The README.md of a capture that is not redacted, of this moment.
[[nodiscard]] std::string ReadmeText(const Account& account);

/// Whether it is one of ours.
[[nodiscard]] bool IsReadmeOfCapture(std::string_view readme);

/// The same for one that is: without the scenario's name and without paths. Those in `paths` are known;
/// others are told by their slashes. Another README.md, somebody's own, is returned as it is.
[[nodiscard]] std::string WithoutNames(std::string_view readme, const std::vector<std::string>& paths);

using Replacements = std::vector<Redaction::Replacement>;

/// The list of what was replaced at the end of a README.md, and the README.md without it.
struct ListedReadme {
    std::string text;
    Replacements list;
};
[[nodiscard]] ListedReadme TakeList(std::string_view readme);

/// Puts the list there:
///
///     ## What was replaced
///
///     - 2 serial numbers, in 9 places
///
///         serial-0001  6
///         serial-0002  3
[[nodiscard]] std::string PutList(const ListedReadme& readme);

/// The list for a terminal; of a long one only how many there are of each kind.
[[nodiscard]] std::string ListForScreen(const Replacements& list);

/// Both lists in one, for a capture that was redacted twice.
[[nodiscard]] Replacements Merged(Replacements list, const Replacements& more);

}  // namespace capture
