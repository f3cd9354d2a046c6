// RAID documents that somebody saved, or made up: whatever a text is, it is refused in words or shown, in
// every format and beside another. The input is a document, or two to compare with byte 0x1E between them.
// One that does not begin with "<" is in short words, an item a line: a blank for each level, the name, "="
// and a value or "?" for a placeholder.

#include "basics/Text.h"
#include "inventory/Changes.h"
#include "inventory/Snapshot.h"
#include "support/Input.h"
#include "support/Property.h"
#include "views/Views.h"

#include <expat.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace fuzzing {
namespace {

std::optional<inventory::Document> Read(std::string_view xml) {
    try {
        return inventory::Document::Read(xml);
    } catch (const inventory::DocumentError& error) {
        Require(std::string_view(error.what()).size() > 1, "a text that is refused is refused in words");
        return std::nullopt;
    }
}

void AppendEscaped(std::string_view text, std::string& xml) {
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20 || std::string_view("&<>\"").find(character) != std::string_view::npos) {
            // What XML cannot carry at all is left to the inputs that are XML.
            xml += code < 0x20 ? "&#9;" : "&#" + std::to_string(code) + ";";
        } else {
            xml += character;
        }
    }
}

std::string XmlOf(std::string_view section) {
    if (section.starts_with('<')) {
        return std::string(section);
    }
    std::string xml = "<RAID version=\"1\">";
    std::size_t open = 0;
    for (const std::string_view line : Split(section, '\n')) {
        const std::size_t level = std::min({line.find_first_not_of(' '), line.size(), open});
        for (; open > level; --open) {
            xml += "</Item>";
        }
        const std::string_view name = line.substr(level, line.find_first_of("=?", level) - level);
        const std::string_view rest = line.substr(level + name.size());
        xml += "<Item Name=\"";
        AppendEscaped(name, xml);
        xml += rest.starts_with('?') ? "\" Valid=\"FALSE" : "\" Valid=\"TRUE";
        xml += rest.empty() ? "" : "\" Value=\"";
        AppendEscaped(rest.starts_with('=') ? rest.substr(1) : std::string_view(), xml);
        xml += "\">";
        ++open;
    }
    for (; open > 0; --open) {
        xml += "</Item>";
    }
    return xml + "</RAID>";
}

template <typename Check>
void ForEachLine(std::string_view text, Check check) {
    Require(text.ends_with('\n'), "what is shown ends with a line");
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        check(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

bool IsWellFormed(const std::string& xml) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    return XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), XML_TRUE) == XML_STATUS_OK;
}

void CheckTexts(const inventory::Snapshot& snapshot) {
    constexpr std::size_t kColumns = 60;
    ForEachLine(views::Table(snapshot, {kColumns, false}), [](std::string_view line) {
        Require(basics::Printable(line) == line, "nothing that is shown steers a terminal");
        Require(basics::WidthOf(line) <= kColumns, "a table fits the terminal");
    });
    std::size_t lines = 0;
    ForEachLine(views::Tree(snapshot), [&](std::string_view line) {
        Require(basics::Printable(line) == line, "nothing that is shown steers a terminal");
        ++lines;
    });
    Require(lines == std::max<std::size_t>(snapshot.Main().Count(), 1), "a tree has every item");
}

void CheckSeries(const inventory::Snapshot& snapshot) {
    std::unordered_set<std::string> series;
    ForEachLine(views::Prometheus(snapshot), [&](std::string_view line) {
        if (!line.starts_with('#')) {
            Require(series.insert(std::string(line.substr(0, line.rfind(' ')))).second,
                    "no series is there twice");
        }
    });
}

void CheckHealth(const inventory::Snapshot& snapshot) {
    const inventory::Health& health = snapshot.TheHealth();
    Require(std::is_sorted(health.findings.begin(), health.findings.end(),
                           [](const auto& one, const auto& other) { return one.level > other.level; }),
            "the worst finding comes first");
    Require((health.level == inventory::Level::Ok) == (health.findings.empty() && health.counts.drives > 0),
            "a server is well when it has drives and nothing is found");
    std::size_t lines = 0;
    ForEachLine(views::MonitoringLine(health, true), [&](std::string_view line) {
        Require(lines == 0 || line.find('|') == std::string_view::npos, "a report cannot begin the figures");
        ++lines;
    });
    Require(lines == health.findings.size() + 1, "a monitoring system gets a line, and one for each finding");
}

void CheckChanges(const inventory::Document& before, const inventory::Document& after) {
    Require(inventory::ChangesBetween(before, before, true).list.empty(),
            "a document is no different from itself");
    const inventory::Changes all = inventory::ChangesBetween(before, after, true);
    Require(all.list.size() == inventory::ChangesBetween(after, before, true).list.size(),
            "there are as many changes back as forth");
    const inventory::Changes told = inventory::ChangesBetween(before, after);
    Require(all.list.size() == told.list.size() + told.movements + told.redactions + told.repetitions,
            "what is left out is counted");
    Require(!views::Differences(all).empty() && !views::DifferencesJson(all, {}, {}).empty(),
            "every change can be told");
}

void CheckDocument(std::string_view input) {
    const Sections sections = Split(input, kSectionEnd);
    std::optional<inventory::Document> document = Read(XmlOf(sections.front()));
    const std::optional<inventory::Document> other = Read(XmlOf(sections.back()));
    if (!document) {
        return;
    }
    if (other) {
        CheckChanges(*document, *other);
    }
    const inventory::Snapshot snapshot(std::move(*document));
    CheckTexts(snapshot);
    CheckHealth(snapshot);
    CheckSeries(snapshot);
    Require(!views::Json(snapshot).empty(), "every text can be told as JSON");
    Require(IsWellFormed(views::Html(snapshot)), "a page is well-formed");
}

}  // namespace
}  // namespace fuzzing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckDocument(fuzzing::TextOf(data, size));
    return 0;
}
