#include "Document.h"

#include "CarriedText.h"
#include "Property.h"

#include <expat.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <memory_resource>
#include <string>
#include <unordered_map>
#include <vector>

namespace fuzzing {
namespace {

constexpr std::string_view kTitleBegin = "### ";
constexpr std::size_t kDocument = 0;
constexpr std::size_t kNone = 0;

/// One element that the document must have; number 0 is the document element itself.
struct Element {
    const CItemDisp* item = nullptr;
    std::size_t parent = kDocument;
    std::size_t firstChild = kNone;
    std::size_t lastChild = kNone;
    std::size_t nextSibling = kNone;
};

using Elements = std::pmr::vector<Element>;

Elements ElementsOf(const ItemList& items, std::pmr::memory_resource& memory) {
    Elements elements(1, &memory);
    std::pmr::unordered_map<std::string_view, std::size_t> lastOfName(&memory);
    for (const CItemDisp* const item : items) {
        if (item == nullptr) {
            continue;
        }
        Element element{item};
        if (const auto found = lastOfName.find(item->m_ParentName);
            !item->m_ParentName.empty() && found != lastOfName.end()) {
            element.parent = found->second;
        }
        const std::size_t number = elements.size();
        Element& parent = elements[element.parent];
        (parent.firstChild == kNone ? parent.firstChild : elements[parent.lastChild].nextSibling) = number;
        parent.lastChild = number;
        lastOfName[item->m_Name] = number;
        elements.push_back(element);
    }
    return elements;
}

/// Lays the parser's events beside the elements that must come.
class DocumentCheck final {
  public:
    DocumentCheck(std::string_view kind, const ItemList& items, ItemFlag& isValid)
        : m_Kind(kind), m_Elements(ElementsOf(items, m_Memory)), m_IsValid(isValid) {}
    DocumentCheck(const DocumentCheck&) = delete;
    DocumentCheck& operator=(const DocumentCheck&) = delete;

    void Start(const char* name, const char** attributes) {
        if (m_Next.empty()) {
            Require(name == m_Kind, "the document element is named after the kind");
            const char* const version = Take(attributes, "version");
            Require(version != nullptr && std::strcmp(version, "1") == 0, "the version is 1");
            m_Next.push_back(m_Elements[kDocument].firstChild);
        } else {
            Require(name == std::string_view("Item"), "every other element is an Item");
            const std::size_t number = m_Next.back();
            Require(number != kNone, "no element stands for nothing");
            CheckItem(m_Elements[number], attributes);
            m_Next.back() = m_Elements[number].nextSibling;
            m_Next.push_back(m_Elements[number].firstChild);
            ++m_Seen;
        }
        for (; *attributes != nullptr; attributes += 2) {
            Require(**attributes == '\0', "no other attribute is there");
        }
    }

    void End() {
        Require(m_Next.back() == kNone, "no item is missing");
        m_Next.pop_back();
    }

    static void Text(std::string_view text) {
        Require(text.find_first_not_of(" \n") == std::string_view::npos, "there is no text");
    }

    void Finish() const { Require(m_Seen == m_Elements.size() - 1, "one element stands for each item"); }

  private:
    /// The value of an attribute, which is then no other one; null where it is absent.
    static const char* Take(const char** attributes, std::string_view name) {
        for (; *attributes != nullptr; attributes += 2) {
            if (*attributes == name) {
                *attributes = "";
                return attributes[1];
            }
        }
        return nullptr;
    }

    static void RequireCarried(const char* value, const std::string& text, const char* property) {
        Require(value != nullptr && IsCarriedAs(text, value), property);
    }

    void CheckItem(const Element& element, const char** attributes) const {
        const CItemDisp& item = *element.item;
        RequireCarried(Take(attributes, "Name"), item.m_Name, "an element bears its item's name");

        const char* const value = Take(attributes, "Value");
        const bool mayLackValue =
            element.firstChild != kNone || item.m_ParentName.empty() || item.m_Name.starts_with(kTitleBegin);
        if (item.m_Value.empty() && mayLackValue) {
            Require(value == nullptr, "an empty value is left out where nobody expects one");
        } else {
            RequireCarried(value, item.m_Value, "an element bears its item's value");
        }

        const char* const flag = Take(attributes, "Valid");
        Require(flag != nullptr && std::strcmp(flag, m_IsValid(item) ? "TRUE" : "FALSE") == 0,
                "an element bears its item's flag");

        const char* const parent = Take(attributes, "Parent");
        if (element.parent == kDocument && !item.m_ParentName.empty()) {
            RequireCarried(parent, item.m_ParentName, "a parent that is not there is named");
        } else {
            Require(parent == nullptr, "only a parent that is not there is named");
        }
    }

    std::array<std::byte, std::size_t{32} * 1024> m_Buffer;
    std::pmr::monotonic_buffer_resource m_Memory{m_Buffer.data(), m_Buffer.size()};
    std::string_view m_Kind;
    Elements m_Elements;
    ItemFlag& m_IsValid;
    std::pmr::vector<std::size_t> m_Next{
        &m_Memory};  ///< of every element that is open, the child that must come next
    std::size_t m_Seen = 0;
};

extern "C" {
void XMLCALL OnStart(void* check, const char* name, const char** attributes) {
    static_cast<DocumentCheck*>(check)->Start(name, attributes);
}
void XMLCALL OnEnd(void* check, const char* /*name*/) {
    static_cast<DocumentCheck*>(check)->End();
}
void XMLCALL OnText(void* /*check*/, const char* text, int length) {
    DocumentCheck::Text({text, static_cast<std::size_t>(length)});
}
}

/// One parser for all documents: a new one would cost more than a document.
XML_Parser FreshParser() {
    static const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    XML_ParserReset(parser.get(), nullptr);
    XML_SetHashSalt(parser.get(), 1);  // Any but 0, for which it would ask the system.
    XML_SetElementHandler(parser.get(), OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser.get(), OnText);
    return parser.get();
}

}  // namespace

void RequireDocument(std::string_view xml, std::string_view kind, const ItemList& items, ItemFlag& isValid) {
    DocumentCheck check(kind, items, isValid);
    const XML_Parser parser = FreshParser();
    XML_SetUserData(parser, &check);
    Require(XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), XML_TRUE) == XML_STATUS_OK,
            "the document is well-formed XML");
    check.Finish();
}

}  // namespace fuzzing
