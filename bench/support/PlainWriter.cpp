#include "PlainWriter.h"

#include "ItemTree.h"

#include <libxml/xmlwriter.h>

#include <memory>
#include <stdexcept>

namespace bench {
namespace {

using convlib::DisplayItem;
using convlib::ItemNode;

const xmlChar* Xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

void Require(int result) {
    if (result < 0) {
        throw std::runtime_error("libxml2 cannot write the document");
    }
}

bool HasValue(const DisplayItem& item, bool hasChildren) {
    return !item.m_Value.empty() ||
           !(hasChildren || item.m_ParentName.empty() || item.m_Name.starts_with("### "));
}

}  // namespace

class PlainWriter::Output final {
  public:
    Output(xmlBuffer* buffer, bool isIndented)
        : m_Writer(xmlNewTextWriterMemory(buffer, 0), xmlFreeTextWriter) {
        if (m_Writer == nullptr) {
            throw std::bad_alloc();
        }
        Require(xmlTextWriterSetIndent(m_Writer.get(), 1));
        Require(xmlTextWriterSetIndentString(m_Writer.get(), Xml(isIndented ? "  " : "")));
    }

    void Begin() {
        Require(xmlTextWriterStartDocument(m_Writer.get(), nullptr, "UTF-8", nullptr));
        Require(xmlTextWriterStartElement(m_Writer.get(), Xml("RAID")));
        Add("version", "1");
    }

    void Add(const Step& step) {
        const DisplayItem& item = *step.item;
        Require(xmlTextWriterStartElement(m_Writer.get(), Xml("Item")));
        Add("Name", item.m_Name.c_str());
        if (HasValue(item, step.hasChildren)) {
            Add("Value", item.m_Value.c_str());
        }
        Add("Valid", item.ValidText().data());
        if (step.isTop && !item.m_ParentName.empty()) {
            Add("Parent", item.m_ParentName.c_str());
        }
    }

    void EndElement() { Require(xmlTextWriterEndElement(m_Writer.get())); }
    void End() { Require(xmlTextWriterEndDocument(m_Writer.get())); }

  private:
    void Add(const char* name, const char* value) {
        Require(xmlTextWriterWriteAttribute(m_Writer.get(), Xml(name), Xml(value)));
    }

    std::unique_ptr<xmlTextWriter, decltype(&xmlFreeTextWriter)> m_Writer;
};

// As it comes the buffer grows by what is needed, and is moved each time.
PlainWriter::Document::Document() : m_Buffer(xmlBufferCreate(), xmlBufferFree) {
    if (m_Buffer == nullptr) {
        throw std::bad_alloc();
    }
    xmlBufferSetAllocationScheme(m_Buffer.get(), XML_BUFFER_ALLOC_DOUBLEIT);
}

std::string_view PlainWriter::Document::Text() const {
    return {reinterpret_cast<const char*>(xmlBufferContent(m_Buffer.get())),
            static_cast<std::size_t>(xmlBufferLength(m_Buffer.get()))};
}

PlainWriter::PlainWriter(const ItemList& items, bool isIndented) : m_IsIndented(isIndented) {
    const convlib::ItemTree tree(items);
    const ItemNode* const document = &tree.Document();
    const ItemNode* node = document->firstChild;
    while (node != nullptr) {
        m_Steps.push_back({node->item, node->parent == document, node->firstChild != nullptr});
        if (node->firstChild != nullptr) {
            node = node->firstChild;
            continue;
        }
        m_Steps.push_back({nullptr});
        while (node->nextSibling == nullptr && node->parent != document) {
            node = node->parent;
            m_Steps.push_back({nullptr});
        }
        node = node->nextSibling;
    }
}

PlainWriter::Document PlainWriter::Write() const {
    Document document;
    Output output(document.m_Buffer.get(), m_IsIndented);
    output.Begin();
    for (const Step& step : m_Steps) {
        if (step.item == nullptr) {
            output.EndElement();
        } else {
            output.Add(step);
        }
    }
    output.End();
    return document;
}

}  // namespace bench
