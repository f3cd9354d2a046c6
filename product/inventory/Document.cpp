#include "inventory/Document.h"

#include <pugixml.hpp>

namespace inventory {
namespace {

constexpr std::string_view kDocumentElement = "RAID";
constexpr std::string_view kItemElement = "Item";
constexpr std::string_view kVersion = "1";

[[noreturn]] void RefuseXml(std::ptrdiff_t place, const std::string& why) {
    throw DocumentError("it is no XML (at byte " + std::to_string(place) + "): " + why);
}

/// Takes over the items of a parsed text in the order in which they stand there.
class Reader final : public pugi::xml_tree_walker {
  public:
    /// Room for more items than that is only made when it is needed.
    explicit Reader(std::size_t expected) { m_Items.reserve(expected); }

    bool for_each(pugi::xml_node& node) override {
        const auto level = static_cast<std::size_t>(depth());
        if (node.type() != pugi::node_element) {
            throw DocumentError("it holds text between its items (at byte " +
                                std::to_string(node.offset_debug()) + ")");
        }
        if (node.name() != kItemElement) {
            throw DocumentError(std::string("it holds something that is no item: ") + node.name());
        }
        if (level >= Document::kMaxDepth) {
            throw DocumentError("its items stand deeper than " + std::to_string(Document::kMaxDepth) +
                                " levels");
        }
        CloseFrom(level);
        m_Open.push_back(m_Items.size());
        Take(node, m_Items.emplace_back());
        return true;
    }

    [[nodiscard]] std::vector<Item> Take() {
        CloseFrom(0);
        return std::move(m_Items);
    }

  private:
    static void Take(const pugi::xml_node& node, Item& item) {
        std::string_view valid;
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            const std::string_view name = attribute.name();
            if (name == "Name") {
                item.name = attribute.value();
            } else if (name == "Value") {
                item.value = attribute.value();
                item.hasValue = true;
            } else if (name == "Valid") {
                valid = attribute.value();
            } else if (name == "Parent") {
                item.lostParent = attribute.value();
            }
        }
        item.isPlaceholder = IsPlaceholder(valid, node);
    }

    static bool IsPlaceholder(std::string_view valid, const pugi::xml_node& node) {
        if (valid != "TRUE" && valid != "FALSE") {
            throw DocumentError("the item at byte " + std::to_string(node.offset_debug()) +
                                " has a Valid that is neither TRUE nor FALSE");
        }
        return valid == "FALSE";
    }

    void CloseFrom(std::size_t level) {
        for (; m_Open.size() > level; m_Open.pop_back()) {
            m_Items[m_Open.back()].size = m_Items.size() - m_Open.back();
        }
    }

    std::vector<Item> m_Items;
    std::vector<std::size_t> m_Open;  ///< of every level, the item that goes on
};

/// The one document element, with nothing but white space beside it.
pugi::xml_node DocumentElementOf(const pugi::xml_document& parsed) {
    pugi::xml_node element;
    for (const pugi::xml_node& node : parsed) {
        if (node.type() != pugi::node_element) {
            RefuseXml(node.offset_debug(), "Text outside the document element");
        }
        if (element) {
            RefuseXml(node.offset_debug(), "A second document element");
        }
        element = node;
    }
    if (!element) {
        RefuseXml(0, "No document element found");
    }
    return element;
}

/// Every item begins with such a character, and some end with one.
std::size_t MostItemsOf(std::string_view xml) {
    std::size_t count = 0;
    for (std::size_t at = xml.find('<'); at != std::string_view::npos; at = xml.find('<', at + 1)) {
        ++count;
    }
    return count;
}

void Write(Siblings items, pugi::xml_node parent) {
    for (const Item& item : items) {
        pugi::xml_node node = parent.append_child(kItemElement.data());
        node.append_attribute("Name") = item.name.c_str();
        if (item.hasValue) {
            node.append_attribute("Value") = item.value.c_str();
        }
        node.append_attribute("Valid") = item.isPlaceholder ? "FALSE" : "TRUE";
        if (!item.lostParent.empty()) {
            node.append_attribute("Parent") = item.lostParent.c_str();
        }
        Write(ChildrenOf(item), node);
    }
}

class TextWriter final : public pugi::xml_writer {
  public:
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
    std::string text;
};

}  // namespace

Document Document::Read(std::string_view xml) {
    pugi::xml_document parsed;
    // The parser takes a NUL for the end, whatever comes behind it.
    if (const std::size_t nul = xml.find('\0'); nul != std::string_view::npos) {
        RefuseXml(static_cast<std::ptrdiff_t>(nul), "A NUL byte");
    }
    // Line ends in values are written as references, which stay what they are; blanks between items mean
    // nothing. As a fragment, so that what stands beside the document element is not passed over.
    const pugi::xml_parse_result result = parsed.load_buffer(
        xml.data(), xml.size(), (pugi::parse_default & ~pugi::parse_eol) | pugi::parse_fragment,
        pugi::encoding_utf8);
    if (!result) {
        RefuseXml(result.offset, result.description());
    }
    pugi::xml_node root = DocumentElementOf(parsed);
    if (root.name() != kDocumentElement) {
        throw DocumentError(std::string("its document element is ") + root.name() + ", not RAID");
    }
    if (root.attribute("version").value() != kVersion) {
        throw DocumentError(std::string("its version is \"") + root.attribute("version").value() +
                            "\", and only 1 is known");
    }
    Reader reader(MostItemsOf(xml));
    root.traverse(reader);
    return Document(reader.Take());
}

std::string XmlOf(const Document& document) {
    pugi::xml_document written;
    pugi::xml_node root = written.append_child(kDocumentElement.data());
    root.append_attribute("version") = kVersion.data();
    Write(document.Roots(), root);
    TextWriter writer;
    written.save(writer, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
    return std::move(writer.text);
}

}  // namespace inventory
