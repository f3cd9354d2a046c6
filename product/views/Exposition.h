#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace views {

/// A metric of the text format for series.
struct Metric {
    std::string_view name;
    std::string_view type;
    std::string_view help;
};

/// The labels of a series as they are written:
///
///     controller="0",slot="3"
///
/// Values are made printable, shortened to what a label can bear, and escaped.
class Labels final {
  public:
    /// The same labels with one more. An empty value is as good as none, and is left out.
    [[nodiscard]] Labels With(std::string_view name, std::string_view value) const;

    [[nodiscard]] const std::string& Text() const { return m_Text; }

  private:
    std::string m_Text;
};

/// Hands out labels that are not there yet: those that come again get one more, `copy="2"` for instance.
class DistinctLabels final {
  public:
    explicit DistinctLabels(std::string_view counter) : m_Counter(counter) {}

    [[nodiscard]] Labels Distinct(const Labels& labels);

  private:
    std::string_view m_Counter;
    std::unordered_map<std::string, std::size_t> m_Times;
};

/// Series in the order in which their metrics were first used, each metric once with all of its series:
///
///     # HELP raid_health How well the server is
///     # TYPE raid_health gauge
///     raid_health 0
class Exposition final {
  public:
    /// `metric` must live as long as this. Labels of one metric must be distinct.
    void Add(const Metric& metric, const Labels& labels, double value);

    [[nodiscard]] std::string Text() const;

  private:
    struct Family {
        const Metric* metric;
        std::string series;
    };

    std::vector<Family> m_Families;
    std::map<const Metric*, std::size_t> m_Places;
};

}  // namespace views
