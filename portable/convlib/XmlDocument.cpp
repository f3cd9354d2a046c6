#include "XmlDocument.h"

#include "ItemTree.h"
#include "XmlText.h"

#include <cstddef>

namespace convlib {
namespace {

constexpr std::string_view kTitleBegin = "### ";

constexpr std::string_view kDeepestIndent =
    "                                                                ";
constexpr std::size_t kBlanksPerLevel = 2;

/// More than most items take, so that a document is seldom moved while it grows.
constexpr std::size_t kAmpleForItem = 80;

void AppendIndent(std::string& xml, std::size_t depth) {
    xml += kDeepestIndent.substr(0, depth * kBlanksPerLevel);
}

bool HasValue(const ItemNode& node) {
    const bool isRoot = node.item->m_ParentName.empty();
    const bool isTitle = node.item->m_Name.starts_with(kTitleBegin);
    const bool hasChildren = node.firstChild != nullptr;
    return !node.item->m_Value.empty() || !(hasChildren || isRoot || isTitle);
}

/// Appends an element's start tag, which is its end as well when it has no children.
void AppendStart(std::string& xml, const ItemNode& node, std::size_t depth) {
    const DisplayItem& item = *node.item;
    AppendIndent(xml, depth);
    xml += "<Item Name=\"";
    AppendAttributeText(xml, item.m_Name);
    if (HasValue(node)) {
        xml += "\" Value=\"";
        AppendAttributeText(xml, item.m_Value);
    }
    xml += "\" Valid=\"";
    xml += item.ValidText();
    // Directly under the document with a parent name: the parent was not found.
    if (depth == 1 && !item.m_ParentName.empty()) {
        xml += "\" Parent=\"";
        AppendAttributeText(xml, item.m_ParentName);
    }
    xml += node.firstChild != nullptr ? "\">\n" : "\"/>\n";
}

void AppendEnd(std::string& xml, std::size_t depth) {
    AppendIndent(xml, depth);
    xml += "</Item>\n";
}

/// Appends what stands below the document.
void AppendItems(std::string& xml, const ItemNode& document) {
    std::size_t depth = 1;
    const ItemNode* node = document.firstChild;
    while (node != nullptr) {
        AppendStart(xml, *node, depth);
        if (node->firstChild != nullptr) {
            node = node->firstChild;
            ++depth;
            continue;
        }
        while (node->nextSibling == nullptr && depth > 1) {
            node = node->parent;
            --depth;
            AppendEnd(xml, depth);
        }
        node = node->nextSibling;
    }
}

}  // namespace

std::string MakeDocument(std::string_view kind, const ItemList& items) {
    const ItemTree tree(items);
    std::string xml;
    xml.reserve(kAmpleForItem * items.size());
    xml += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<";
    xml += kind;
    if (tree.Document().firstChild == nullptr) {
        xml += " version=\"1\"/>\n";
        return xml;
    }
    xml += " version=\"1\">\n";
    AppendItems(xml, tree.Document());
    xml += "</";
    xml += kind;
    xml += ">\n";
    return xml;
}

}  // namespace convlib
