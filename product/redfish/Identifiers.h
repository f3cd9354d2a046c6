#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace redfish {

/// Names for the members of a collection, for use in URIs: whatever the texts are that they are made of, they
/// are letters, digits, "-", "_" and "." alone, short, each another one, and the same from answer to answer
/// as long as the texts and their order are.
///
///     "252-4" -> "252-4", again -> "252-4-2", "../x" -> "_..-x-5f1d3c0a"
class Identifiers final {
  public:
    [[nodiscard]] std::string Next(std::string_view wanted);

  private:
    std::unordered_set<std::string> m_Taken;
    std::unordered_map<std::string, std::size_t> m_Counts;
};

}  // namespace redfish
