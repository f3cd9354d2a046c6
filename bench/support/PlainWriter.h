#pragma once

#include "DisplayItem.h"

#include <libxml/tree.h>

#include <memory>
#include <string_view>
#include <vector>

namespace bench {

/// Writes a list of items as the conversion library does, by libxml2's xmlTextWriter. Where the items stand
/// in the tree is worked out beforehand, so that writing is all that is measured of it.
class PlainWriter final {
  public:
    /// The items must outlive it. Without `isIndented` the lines have no blanks at their fronts, which a tree
    /// of very many levels would mostly consist of.
    PlainWriter(const ItemList& items, bool isIndented);

    /// The text, where libxml2 has put it.
    class Document final {
      public:
        Document();
        [[nodiscard]] std::string_view Text() const;

      private:
        friend class PlainWriter;
        std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> m_Buffer;
    };

    /// Throws std::runtime_error where libxml2 fails.
    [[nodiscard]] Document Write() const;

  private:
    struct Step {
        const convlib::DisplayItem* item;  ///< null: the end of an element
        bool isTop = false;
        bool hasChildren = false;
    };
    class Output;

    bool m_IsIndented;
    std::vector<Step> m_Steps;
};

}  // namespace bench
