#pragma once

#include <string>
#include <string_view>
#include <vector>

/// As much JSON as an observation needs. Text is bytes: one character of the same number each.
namespace replay::json {

[[nodiscard]] std::string Text(std::string_view bytes);
[[nodiscard]] std::string List(const std::vector<std::string>& values);
[[nodiscard]] std::string Texts(const std::vector<std::string>& texts);

/// An object whose members stand in the order in which they were added.
class Object final {
  public:
    void Add(std::string_view name, const std::string& value);
    [[nodiscard]] std::string Whole() const { return "{" + m_Members + "}\n"; }

  private:
    std::string m_Members;
};

}  // namespace replay::json
