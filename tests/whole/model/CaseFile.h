#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace replay {

/// The surroundings that a case asks for: the `key=value` lines of its case.txt.
///
///     method=GetInfo
///     ctrl_no= 0x
///
/// A missing key, a number that is none and a choice that is unknown throw std::runtime_error.
class CaseFile final {
  public:
    explicit CaseFile(const std::filesystem::path& folder);

    [[nodiscard]] const std::string& Text(const std::string& key) const;
    /// Of a key whose line may be missing.
    [[nodiscard]] std::optional<std::string> OptionalText(const std::string& key) const;
    [[nodiscard]] std::uint32_t Number(const std::string& key) const;
    /// Whether the value is `yes`; anything but `yes` and `no` is refused.
    [[nodiscard]] bool Choice(const std::string& key, const std::string& yes, const std::string& no) const;

  private:
    std::map<std::string, std::string> m_Values;
};

}  // namespace replay
