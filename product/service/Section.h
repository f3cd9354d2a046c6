#pragma once

#include <toml++/toml.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace service {

/// A table of a configuration, the whole file or [limits]. Its keys are taken one by one; what is wrong with
/// them is noted, and what is left over in the end is a slip. Null: the table is not there.
class Section final {
  public:
    Section(const toml::table* table, std::string name, std::vector<std::string>& problems)
        : m_Table(table), m_Name(std::move(name)), m_Problems(problems) {}

    /// Keeps the value as it is where the key is not there or wrong.
    void Take(const char* key, bool& value);
    void Take(const char* key, std::string& value);
    void Take(const char* key, std::optional<std::string>& value);
    /// Whole numbers from 0 on.
    template <typename Number>
    void TakeCount(const char* key, Number& value, std::uint64_t least, std::uint64_t most) {
        if (const std::optional<std::uint64_t> count = CountOf(key, least, most)) {
            value = static_cast<Number>(*count);
        }
    }
    template <typename Number>
    void TakeCount(const char* key, std::optional<Number>& value, std::uint64_t least, std::uint64_t most) {
        if (const std::optional<std::uint64_t> count = CountOf(key, least, most)) {
            value = static_cast<Number>(*count);
        }
    }
    void Take(const char* key, std::chrono::seconds& value, std::chrono::seconds least,
              std::chrono::seconds most);
    /// Of at least one text; any number of them.
    void Take(const char* key, std::vector<std::string>& values);
    void Take(const char* key, std::optional<std::vector<std::string>>& values);

    /// A table below this one.
    [[nodiscard]] Section Below(const char* key);
    /// The tables of an array of tables, [[channel]].
    [[nodiscard]] std::vector<Section> Each(const char* key);

    void Complain(const char* key, const std::string& what);

    /// Notes the keys that nobody has taken.
    void End();

  private:
    [[nodiscard]] const toml::node* Find(const char* key);
    [[nodiscard]] std::optional<std::uint64_t> CountOf(const char* key, std::uint64_t least,
                                                       std::uint64_t most);
    void Complain(const toml::node& node, const std::string& key, const std::string& what);

    const toml::table* m_Table;
    std::string m_Name;
    std::vector<std::string>& m_Problems;
    std::vector<std::string> m_Known;
};

}  // namespace service
