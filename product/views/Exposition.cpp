#include "Exposition.h"

#include "basics/Text.h"

#include <array>
#include <charconv>

namespace views {
namespace {

// Labels travel with every sample; a report's line of 100,000 characters need not.
constexpr std::size_t kMaxLabelWidth = 200;

std::string Escaped(std::string_view value) {
    std::string escaped;
    for (const char character : value) {
        if (character == '\n') {
            escaped += "\\n";
            continue;
        }
        if (character == '\\' || character == '"') {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

std::string NumberText(double number) {
    std::array<char, 400> text{};  // The longest number without an exponent fits.
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    return {text.data(), result.ptr};
}

}  // namespace

Labels Labels::With(std::string_view name, std::string_view value) const {
    Labels more = *this;
    if (!value.empty()) {
        more.m_Text += more.m_Text.empty() ? "" : ",";
        more.m_Text += name;
        more.m_Text += "=\"" + Escaped(basics::Shortened(basics::Printable(value), kMaxLabelWidth)) + '"';
    }
    return more;
}

Labels DistinctLabels::Distinct(const Labels& labels) {
    const std::size_t times = ++m_Times[labels.Text()];
    return times == 1 ? labels : labels.With(m_Counter, std::to_string(times));
}

void Exposition::Add(const Metric& metric, const Labels& labels, double value) {
    const auto [place, isNew] = m_Places.try_emplace(&metric, m_Families.size());
    if (isNew) {
        m_Families.push_back({&metric, ""});
    }
    std::string& series = m_Families[place->second].series;
    series += metric.name;
    series += labels.Text().empty() ? "" : '{' + labels.Text() + '}';
    series += ' ' + NumberText(value) + '\n';
}

std::string Exposition::Text() const {
    std::string text;
    for (const Family& family : m_Families) {
        text.append("# HELP ").append(family.metric->name).append(" ").append(family.metric->help);
        text.append("\n# TYPE ").append(family.metric->name).append(" ").append(family.metric->type);
        text.append("\n").append(family.series);
    }
    return text;
}

}  // namespace views
