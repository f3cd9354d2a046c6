#include "Section.h"

#include "basics/Duration.h"
#include "basics/NearestName.h"
#include "basics/Text.h"

#include <algorithm>
#include <utility>

namespace service {
namespace {

std::string LineOf(const toml::source_region& region) {
    return "line " + std::to_string(region.begin.line) + ": ";
}

}  // namespace

const toml::node* Section::Find(const char* key) {
    m_Known.emplace_back(key);
    return m_Table == nullptr ? nullptr : m_Table->get(key);
}

void Section::Complain(const toml::node& node, const std::string& key, const std::string& what) {
    m_Problems.push_back(LineOf(node.source()) + (m_Name.empty() ? "" : m_Name + ".") + basics::OneLine(key) +
                         ": " + what);
}

void Section::Complain(const char* key, const std::string& what) {
    const toml::node* const node = m_Table == nullptr ? nullptr : m_Table->get(key);
    if (node != nullptr) {
        Complain(*node, key, what);
    } else if (m_Table != nullptr) {
        Complain(*m_Table, key, what);
    }
}

void Section::Take(const char* key, bool& value) {
    if (const toml::node* const node = Find(key)) {
        const auto* const truth = node->as_boolean();
        truth == nullptr ? Complain(*node, key, "it is true or false") : void(value = truth->get());
    }
}

void Section::Take(const char* key, std::string& value) {
    if (const toml::node* const node = Find(key)) {
        const auto* const text = node->as_string();
        if (text == nullptr || text->get().empty()) {
            Complain(*node, key, "it is a text in quotes, and not empty");
        } else {
            value = text->get();
        }
    }
}

void Section::Take(const char* key, std::optional<std::string>& value) {
    std::string text;
    Take(key, text);
    if (!text.empty()) {
        value = std::move(text);
    }
}

std::optional<std::uint64_t> Section::CountOf(const char* key, std::uint64_t least, std::uint64_t most) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return std::nullopt;
    }
    const auto* const number = node->as_integer();
    const std::int64_t count = number == nullptr ? -1 : number->get();
    if (count < 0 || static_cast<std::uint64_t>(count) < least || static_cast<std::uint64_t>(count) > most) {
        Complain(*node, key,
                 "it is a whole number from " + std::to_string(least) + " to " + std::to_string(most));
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(count);
}

void Section::Take(const char* key, std::chrono::seconds& value, std::chrono::seconds least,
                   std::chrono::seconds most) {
    if (const toml::node* const node = Find(key)) {
        const auto* const text = node->as_string();
        const auto duration = text == nullptr ? std::nullopt : basics::DurationFrom(text->get());
        if (!duration || *duration < least || *duration > most) {
            Complain(*node, key,
                     "it is a time such as \"90s\", \"5m\", \"6h\" or \"1d\", from " +
                         basics::DurationText(least) + " to " + basics::DurationText(most));
        } else {
            value = *duration;
        }
    }
}

void Section::Take(const char* key, std::vector<std::string>& values) {
    std::optional<std::vector<std::string>> taken;
    Take(key, taken);
    if (taken && taken->empty()) {
        Complain(key, "it is a list of texts, [\"one\", \"two\"]");
    } else if (taken) {
        values = std::move(*taken);
    }
}

void Section::Take(const char* key, std::optional<std::vector<std::string>>& values) {
    const toml::node* const node = Find(key);
    if (node == nullptr) {
        return;
    }
    const toml::array* const list = node->as_array();
    const bool areTexts =
        list != nullptr && std::all_of(list->begin(), list->end(), [](const toml::node& each) {
            return each.is_string() && !each.as_string()->get().empty();
        });
    if (!areTexts) {
        Complain(*node, key, "it is a list of texts, [\"one\", \"two\"]");
        return;
    }
    values.emplace();
    for (const toml::node& each : *list) {
        values->push_back(each.as_string()->get());
    }
}

Section Section::Below(const char* key) {
    const toml::node* const node = Find(key);
    if (node != nullptr && !node->is_table()) {
        Complain(*node, key, "it is a section, [" + std::string(key) + "]");
    }
    return {node == nullptr ? nullptr : node->as_table(), key, m_Problems};
}

std::vector<Section> Section::Each(const char* key) {
    std::vector<Section> sections;
    const toml::node* const node = Find(key);
    const toml::array* const list = node == nullptr ? nullptr : node->as_array();
    const bool areTables =
        list != nullptr &&
        std::all_of(list->begin(), list->end(), [](const toml::node& each) { return each.is_table(); });
    if (node != nullptr && !areTables) {
        Complain(*node, key, "each is a section of its own, [[" + std::string(key) + "]]");
    } else if (list != nullptr) {
        for (const toml::node& each : *list) {
            sections.emplace_back(each.as_table(), key, m_Problems);
        }
    }
    return sections;
}

void Section::End() {
    if (m_Table == nullptr) {
        return;
    }
    for (const auto& [key, value] : *m_Table) {
        const std::string name(key.str());
        if (std::find(m_Known.begin(), m_Known.end(), name) == m_Known.end()) {
            const std::string nearest = basics::NearestName(m_Known, name);
            Complain(value, name,
                     "there is no such key" + (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
        }
    }
}

}  // namespace service
