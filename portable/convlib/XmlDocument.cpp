#include "XmlDocument.h"

#include "XmlText.h"

#include <vector>

namespace convlib {
namespace {

using Index = ItemTree::Index;

constexpr std::string_view kTitleBegin = "### ";

constexpr std::string_view kDeepestIndent =
    "                                                                ";
constexpr std::size_t kBlanksPerLevel = 2;

void AppendIndent(TextSink& sink, std::size_t depth) {
    sink.Append(kDeepestIndent.substr(0, depth * kBlanksPerLevel));
}

bool HasValue(const DisplayItem& item, bool hasChildren) {
    const bool isRoot = item.m_ParentName.empty();
    const bool isTitle = item.m_Name.starts_with(kTitleBegin);
    return !item.m_Value.empty() || !(hasChildren || isRoot || isTitle);
}

/// Appends an element's start tag, which is its end as well when it has no children.
void AppendStart(TextSink& sink, const ItemTree& tree, Index node, std::size_t depth) {
    const DisplayItem& item = tree.Item(node);
    const bool hasChildren = tree.FirstChild(node) != ItemTree::kNone;
    AppendIndent(sink, depth);
    sink.Append("<Item Name=\"");
    AppendAttributeText(sink, item.m_Name);
    if (HasValue(item, hasChildren)) {
        sink.Append("\" Value=\"");
        AppendAttributeText(sink, item.m_Value);
    }
    sink.Append("\" Valid=\"");
    sink.Append(item.ValidText());
    // Directly under the document with a parent name: the parent was not found.
    if (depth == 1 && !item.m_ParentName.empty()) {
        sink.Append("\" Parent=\"");
        AppendAttributeText(sink, item.m_ParentName);
    }
    sink.Append(hasChildren ? "\">\n" : "\"/>\n");
}

void AppendEnd(TextSink& sink, std::size_t depth) {
    AppendIndent(sink, depth);
    sink.Append("</Item>\n");
}

/// Appends the items below the document. `path` holds the elements that are open: one more than its size is
/// the depth of the element at hand.
void AppendItems(TextSink& sink, const ItemTree& tree) {
    std::vector<Index> path;
    Index node = tree.FirstChild(ItemTree::kDocument);
    while (node != ItemTree::kNone) {
        AppendStart(sink, tree, node, path.size() + 1);
        if (tree.FirstChild(node) != ItemTree::kNone) {
            path.push_back(node);
            node = tree.FirstChild(node);
            continue;
        }
        while (tree.NextSibling(node) == ItemTree::kNone && !path.empty()) {
            node = path.back();
            path.pop_back();
            AppendEnd(sink, path.size() + 1);
        }
        node = tree.NextSibling(node);
    }
}

}  // namespace

void WriteDocument(TextSink& sink, std::string_view kind, const ItemTree& tree) {
    sink.Append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<");
    sink.Append(kind);
    if (tree.FirstChild(ItemTree::kDocument) == ItemTree::kNone) {
        sink.Append(" version=\"1\"/>\n");
        return;
    }
    sink.Append(" version=\"1\">\n");
    AppendItems(sink, tree);
    sink.Append("</");
    sink.Append(kind);
    sink.Append(">\n");
}

}  // namespace convlib
