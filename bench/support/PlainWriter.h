#pragma once

#include "convlib/ItemTree.h"

#include <string>
#include <vector>

namespace bench {

/// Writes a list of items as the conversion library does, by libxml2's xmlTextWriter. Where the items stand
/// in the tree is worked out beforehand, so that writing is all that is measured of it.
class PlainWriter final {
  public:
    /// The items must outlive it. Without `isIndented` the lines have no blanks at their fronts, which a tree
    /// of very many levels would mostly consist of.
    PlainWriter(const ItemList& items, bool isIndented);

    /// Throws std::runtime_error where libxml2 fails.
    [[nodiscard]] std::string Text() const;

    /// As `Text`, but the text is dropped; its size is the result.
    [[nodiscard]] std::size_t Size() const;

  private:
    struct Step {
        const convlib::DisplayItem* item;  ///< null: the end of an element
        bool isTop = false;
        bool hasChildren = false;
    };
    class Output;

    void Write(Output& output) const;

    bool m_IsIndented;
    std::vector<Step> m_Steps;
};

}  // namespace bench
