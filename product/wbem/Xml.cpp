#include "Xml.h"

#include "XmlText.h"
#include "basics/Text.h"
#include "basics/Words.h"

#include <libxml/parser.h>

#include <algorithm>
#include <exception>
#include <memory>

namespace wbem {
namespace {

using Kind = XmlError::Kind;

std::string TextOf(const xmlChar* text) {
    return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

/// Builds the tree as the parser tells of it. Nothing may be thrown through the parser, which is C: it is
/// kept, and the parser stopped.
class Builder final {
  public:
    [[nodiscard]] Element Parse(std::string_view text);

  private:
    struct FreeParser {
        void operator()(xmlParserCtxt* parser) const { xmlFreeParserCtxt(parser); }
    };

    [[nodiscard]] static xmlSAXHandler Handlers();
    [[nodiscard]] std::string Problem() const;
    void Open(const xmlChar* name, const xmlChar** attributes);
    void Close();
    void Refuse(const std::string& why) { throw XmlError(Kind::Refused, why); }

    template <typename Work>
    static void Guard(void* self, Work work) noexcept {
        auto& builder = *static_cast<Builder*>(self);
        if (builder.m_Thrown) {
            return;
        }
        try {
            work(builder);
        } catch (...) {
            builder.m_Thrown = std::current_exception();
            xmlStopParser(builder.m_Parser.get());
        }
    }

    std::unique_ptr<xmlParserCtxt, FreeParser> m_Parser;
    std::vector<Element> m_Open{Element{}};  ///< from the outermost, which holds the document's
    std::exception_ptr m_Thrown;
};

// The parser's first interface, without namespaces: CIM-XML has none, and each would be looked for among all
// that are declared.
xmlSAXHandler Builder::Handlers() {
    xmlSAXHandler handlers{};
    handlers.initialized = 1;
    handlers.internalSubset = [](void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
        Guard(self, [](Builder& builder) { builder.Refuse("it has a document type"); });
    };
    handlers.startElement = [](void* self, const xmlChar* name, const xmlChar** attributes) {
        Guard(self, [&](Builder& builder) { builder.Open(name, attributes); });
    };
    handlers.endElement = [](void* self, const xmlChar*) { Guard(self, [](Builder& b) { b.Close(); }); };
    handlers.characters = [](void* self, const xmlChar* text, int length) {
        Guard(self, [&](Builder& builder) {
            builder.m_Open.back().text.append(reinterpret_cast<const char*>(text),
                                              static_cast<std::size_t>(length));
        });
    };
    handlers.ignorableWhitespace = handlers.characters;
    return handlers;
}

void Builder::Open(const xmlChar* name, const xmlChar** attributes) {
    if (m_Open.size() > kDeepest) {
        Refuse("its elements stand deeper than " + std::to_string(kDeepest) + " levels");
    }
    Element element{.name = TextOf(name)};
    for (const xmlChar** at = attributes; at != nullptr && *at != nullptr; at += 2) {
        element.attributes.emplace_back(TextOf(at[0]), TextOf(at[1]));
    }
    m_Open.push_back(std::move(element));
}

void Builder::Close() {
    Element done = std::move(m_Open.back());
    m_Open.pop_back();
    m_Open.back().children.push_back(std::move(done));
}

std::string Builder::Problem() const {
    const xmlError* const error = xmlCtxtGetLastError(m_Parser.get());
    if (error == nullptr || error->message == nullptr) {
        return "it ends too early";
    }
    return "line " + std::to_string(error->line) + ": " +
           basics::OneLine(std::string(basics::Trimmed(error->message)));
}

Element Builder::Parse(std::string_view text) {
    xmlSAXHandler handlers = Handlers();
    m_Parser.reset(xmlCreatePushParserCtxt(&handlers, this, nullptr, 0, nullptr));
    if (!m_Parser) {
        throw std::bad_alloc();
    }
    // Without a document type there are no entities but the five. Left to themselves, attributes would hold
    // "&#38;" for the "&" of one.
    xmlCtxtUseOptions(m_Parser.get(), XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR |
                                          XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC);
    const int result = xmlParseChunk(m_Parser.get(), text.data(), static_cast<int>(text.size()), 1);
    if (m_Thrown) {
        std::rethrow_exception(m_Thrown);
    }
    if (result == XML_ERR_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (result != XML_ERR_OK || m_Parser->wellFormed == 0 || m_Open.size() != 1 ||
        m_Open.front().children.size() != 1) {
        throw XmlError(Kind::NotWellFormed, Problem());
    }
    return std::move(m_Open.front().children.front());
}

/// What the declaration says, `<?xml version="1.0" encoding="utf-8"?>`; empty where it says nothing.
std::string_view EncodingOf(std::string_view text) {
    if (!text.starts_with("<?xml")) {
        return {};
    }
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t name = declaration.find("encoding");
    const std::size_t open = declaration.find_first_of("\"'", name);
    if (name == std::string_view::npos || open == std::string_view::npos) {
        return {};
    }
    const std::string_view rest = declaration.substr(open + 1);
    return rest.substr(0, rest.find(declaration[open]));
}

// An attribute's value holds no "<": all of an element's attributes stand before the next one.
bool HasManyAttributes(std::string_view text) {
    std::size_t count = 0;
    for (const char character : text) {
        count = character == '<' ? 0 : count + (character == '=' ? 1 : 0);
        if (count > kMostAttributes) {
            return true;
        }
    }
    return false;
}

}  // namespace

const std::string* Element::Attribute(std::string_view called) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const auto& attribute) { return attribute.first == called; });
    return found == attributes.end() ? nullptr : &found->second;
}

const Element* Element::Child(std::string_view called) const {
    const auto found = std::find_if(children.begin(), children.end(),
                                    [&](const Element& child) { return child.name == called; });
    return found == children.end() ? nullptr : &*found;
}

Element ReadXml(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    // So the parser has no encoding to guess, and none to convert.
    if (!IsXmlText(text)) {
        throw XmlError(Kind::NotWellFormed, "it is no UTF-8, or has characters that XML does not allow");
    }
    const std::string_view encoding = EncodingOf(text);
    if (!encoding.empty() && !basics::IsSameWord(encoding, "utf-8")) {
        throw XmlError(Kind::NotWellFormed, "its encoding is not UTF-8");
    }
    if (HasManyAttributes(text)) {
        throw XmlError(Kind::Refused, "an element has too many attributes");
    }
    [[maybe_unused]] static const bool isReady = [] {
        xmlInitParser();
        return true;
    }();
    return Builder().Parse(text);
}

}  // namespace wbem
