#include "HtmlParts.h"
#include "basics/Text.h"
#include "basics/Words.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace views::html {
namespace {

using inventory::Controller;
using inventory::Drive;

constexpr std::size_t kMaxStateWidth = 24;  // What a box has room for.
constexpr unsigned kMaxDrawnGap = 4;        // A wider one is one box.

struct Slot {
    std::optional<unsigned> number;
    const Drive* drive;
};

struct Enclosure {
    std::string name;
    std::vector<Slot> known;    ///< by their numbers
    std::vector<Slot> unknown;  ///< without a number
};

/// In the order in which the document first names them.
std::vector<Enclosure> EnclosuresOf(const Controller& controller) {
    std::vector<Enclosure> enclosures;
    std::unordered_map<std::string, std::size_t> places;
    for (const Drive& drive : controller.drives) {
        const auto [place, isNew] = places.try_emplace(drive.enclosure, enclosures.size());
        if (isNew) {
            enclosures.push_back({drive.enclosure, {}, {}});
        }
        Enclosure& enclosure = enclosures[place->second];
        const Slot slot{basics::NumberFrom<unsigned>(drive.slot), &drive};
        (slot.number ? enclosure.known : enclosure.unknown).push_back(slot);
    }
    for (Enclosure& enclosure : enclosures) {
        std::stable_sort(enclosure.known.begin(), enclosure.known.end(),
                         [](const Slot& one, const Slot& other) { return *one.number < *other.number; });
    }
    return enclosures;
}

std::string TitleOf(const Enclosure& enclosure) {
    return enclosure.name.empty() ? "Enclosure not told" : "Enclosure " + enclosure.name;
}

/// The report's own word, unless something else is wrong; the table has everything that is.
std::string ShortStateOf(const Drive& drive, const std::string& state) {
    const bool isWord = !drive.detail.empty() && state.find(drive.detail) != std::string::npos;
    const std::string_view first =
        isWord ? drive.detail : std::string_view(state).substr(0, state.find(", "));
    return basics::Shortened(basics::Printable(first), kMaxStateWidth);
}

/// What an ear gets to know before the boxes.
std::string LabelOf(const Enclosure& enclosure) {
    std::size_t bad = 0;
    const auto count = [&](const std::vector<Slot>& slots) {
        bad += static_cast<std::size_t>(std::count_if(slots.begin(), slots.end(), [](const Slot& slot) {
            return slot.drive->health != inventory::Level::Ok;
        }));
        return slots.size();
    };
    const std::size_t all = count(enclosure.known) + count(enclosure.unknown);
    return TitleOf(enclosure) + ": " + std::to_string(all) + (all == 1 ? " drive, " : " drives, ") +
           (bad == 0 ? "all well" : std::to_string(bad) + " not well");
}

/// Draws one controller's enclosures.
class Drawing final {
  public:
    Drawing(const Controller& controller, const Places& places, Element page)
        : m_Controller(controller), m_Places(places), m_Page(page) {}

    void Add(const Enclosure& enclosure) {
        const std::string label = LabelOf(enclosure);
        m_Page.Add("h4", TitleOf(enclosure));
        if (!enclosure.known.empty()) {
            AddKnown(enclosure.known, m_Page.Add("ol", {{"class", "slots"}, {"aria-label", label}}));
        }
        if (!enclosure.unknown.empty()) {
            m_Page.Add("p", "In a slot that is not told:", {{"class", "note"}});
            Element list = m_Page.Add("ul", {{"class", "slots"}, {"aria-label", label}});
            for (const Slot& slot : enclosure.unknown) {
                AddDrive(slot, list);
            }
        }
    }

  private:
    void AddKnown(const std::vector<Slot>& slots, Element list) {
        unsigned next = *slots.front().number;
        for (const Slot& slot : slots) {
            AddGap(next, *slot.number, list);
            AddDrive(slot, list);
            next = *slot.number + 1;
        }
    }

    // Two drives in one slot leave `next` behind the second; that is no gap.
    static void AddGap(unsigned first, unsigned end, Element list) {
        if (first >= end) {
            return;
        }
        if (end - first > kMaxDrawnGap) {
            AddEmpty(std::to_string(first) + "\xE2\x80\x93" + std::to_string(end - 1), "slot empty wide",
                     list);
            return;
        }
        for (unsigned number = first; number < end; ++number) {
            AddEmpty(std::to_string(number), "slot empty", list);
        }
    }

    static void AddEmpty(const std::string& numbers, std::string_view look, Element list) {
        Element box = list.Add("li", {{"class", look}});
        AddNumber(numbers, box);
        box.Add("span", "empty", {{"class", "state"}});
    }

    static void AddNumber(const std::string& number, Element box) {
        Element span = box.Add("span", {{"class", "no"}});
        span.Add("span", "slot ", {{"class", "aside"}}).Text(number).Text(" ");
    }

    void AddDrive(const Slot& slot, Element list) {
        const Drive& drive = *slot.drive;
        const Look look = LookOf(drive);
        const std::string classes = "slot " + std::string(ClassOf(look));
        const std::string state = ShortStateOf(drive, m_Places.StateOf(m_Controller, drive));
        Element box = list.Add("li", {{"class", classes}, {"id", m_Places.AnchorOf(m_Controller, drive)}});
        AddNumber(slot.number ? std::to_string(*slot.number) : "", box);
        AddSign(look, box);
        box.Add("b", drive.number.empty() ? "drive" : drive.number).Text(" ");
        box.Add("span", drive.capacity, {{"class", "size"}}).Text(" ");
        box.Add("span", state, {{"class", "state"}});
    }

    const Controller& m_Controller;
    const Places& m_Places;
    Element m_Page;
};

}  // namespace

void AddEnclosures(const Controller& controller, const Places& places, Element page) {
    Drawing drawing(controller, places, page);
    for (const Enclosure& enclosure : EnclosuresOf(controller)) {
        drawing.Add(enclosure);
    }
}

}  // namespace views::html
