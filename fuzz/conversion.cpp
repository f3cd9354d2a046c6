// The conversion library over any list of items. The first section is the kind of document, every other one
// an item: a character for the flag, then parent, name and value, then what parent, name and value are
// rewritten to.

#include "convlib/EntryPoints.h"
#include "support/Document.h"
#include "support/Input.h"
#include "support/Property.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using fuzzing::Require;
using Converter = std::unique_ptr<QelLibIF, DeleteLibIFFunction*>;

constexpr std::uint32_t kBadArgument = 0x80000001;

std::unordered_map<const CItemDisp*, bool> g_flags;

bool FlagOf(const CItemDisp& item) {
    return g_flags.at(&item);
}

/// "T" and "F" are the two flags, and "0" is a null entry; with any other character no item may come of it.
void AddItem(ItemList& items, std::string_view section) {
    const char flag = section.empty() ? '\0' : section.front();
    if (flag == '0') {
        items.push_back(nullptr);
        return;
    }
    section.remove_prefix(section.empty() ? 0 : 1);
    const fuzzing::Sections fields = fuzzing::Split(section, fuzzing::kFieldEnd);
    const auto field = [&fields](std::size_t number) {
        return std::string(number < fields.size() ? fields[number] : std::string_view());
    };
    const std::string flagText = flag == 'T' ? "TRUE" : flag == 'F' ? "FALSE" : std::string(1, flag);
    CItemDisp* const item =
        CreateItemDisp(field(0).c_str(), field(1).c_str(), field(2).c_str(), flagText.c_str());
    Require((item != nullptr) == (flag == 'T' || flag == 'F'), "an item is made of the two flags only");
    if (item == nullptr) {
        return;
    }
    items.push_back(item);
    g_flags[item] = flag == 'T';
    std::string* const rewritten[] = {&item->m_ParentName, &item->m_Name, &item->m_Value};
    std::size_t number = 0;
    for (std::string* const text : rewritten) {
        Require(std::strcmp(text->c_str(), field(number).c_str()) == 0,
                "an item holds its texts up to their ends");
        if (fields.size() > number + std::size(rewritten)) {
            *text = field(number + std::size(rewritten));
        }
        ++number;
    }
}

bool IsAsciiName(std::string_view text) {
    constexpr std::string_view kStarts = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
    constexpr std::string_view kOthers = "0123456789-.";
    return !text.empty() && kStarts.find(text.front()) != std::string_view::npos &&
           std::all_of(text.begin(), text.end(), [&](char each) {
               return kStarts.find(each) != std::string_view::npos ||
                      kOthers.find(each) != std::string_view::npos;
           });
}

/// "" when the kind is refused. Parsers are of several minds about names beyond ASCII, so only those within
/// it make a document that is looked into.
std::string Convert(QelLibIF& converter, const std::string& kind, ItemList& items) {
    const char* xml = nullptr;
    const std::uint32_t status = converter.ConvertToXml(0, kind.c_str(), &items, &xml);
    const std::string_view kindAsPassed = kind.c_str();
    const bool isAscii = std::all_of(kindAsPassed.begin(), kindAsPassed.end(),
                                     [](char each) { return static_cast<unsigned char>(each) < 0x80; });
    Require(status == 0 || status == kBadArgument, "only a bad kind makes a conversion fail");
    Require((status == 0) == (xml != nullptr), "a text comes with success only");
    Require(!isAscii || (status == 0) == IsAsciiName(kindAsPassed), "exactly names are good kinds");
    if (xml == nullptr) {
        return "";
    }
    if (isAscii) {
        fuzzing::RequireDocument(xml, kindAsPassed, items, FlagOf);
    }
    return xml;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = fuzzing::TextOf(data, size);
    const fuzzing::Sections sections = fuzzing::Split(input, fuzzing::kSectionEnd);
    ItemList items;
    for (std::size_t number = 1; number < sections.size(); ++number) {
        AddItem(items, sections[number]);
    }
    const std::string kind(sections.front());
    const Converter converter(CreateLibIF(), DeleteLibIF);
    const std::string document = Convert(*converter, kind, items);
    if (fuzzing::IsRunTwice(input)) {
        const Converter another(CreateLibIF(), DeleteLibIF);
        Require(Convert(*converter, kind, items) == document && Convert(*another, kind, items) == document,
                "the same items give the same document");
    }
    for (CItemDisp* const item : items) {
        DeleteItemDisp(item);
    }
    g_flags.clear();
    return 0;
}
