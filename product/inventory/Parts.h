#pragma once

#include "inventory/Changes.h"
#include "inventory/Document.h"
#include "inventory/Server.h"

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace inventory {

/// A root of a document with everything below it, as it is compared with that of another document.
struct Part {
    std::shared_ptr<const ChangedPart> words;
    std::string name;  ///< its place, shared by all that claim to be there; `words` has them numbered
    const Item* root = nullptr;
    bool isDrive = false;
    std::size_t partner = kNowhere;  ///< which of the other document's parts is the same one
};

/// The parts of a document, in its order. Leads into the document, which must live as long.
class Parts final {
  public:
    explicit Parts(const Document& document);

    [[nodiscard]] std::vector<Part>& All() { return m_Parts; }
    [[nodiscard]] const std::vector<Part>& All() const { return m_Parts; }

    /// Which part is the drive that an item in a group's list of its members is about; nowhere where that is
    /// not there, or of any other item.
    [[nodiscard]] std::size_t DriveOfMember(const Item& member) const;

  private:
    void Add(const Item& root, ChangedPart words, bool isDrive = false);
    void AddController(const Controller& controller);

    std::vector<Part> m_Parts;
    std::unordered_map<std::string, std::size_t> m_Occurrences;  ///< by names
    std::unordered_map<const Item*, std::size_t> m_DriveOfMember;
};

/// Finds out which parts are the same.
void Pair(Parts& before, Parts& after);

/// Whether a drive, known by its serial number, stands in another place than it did. Where a place is not
/// told nobody knows.
[[nodiscard]] bool HasMoved(const Part& before, const Part& after);

/// Whether it is another drive that stands in the same place.
[[nodiscard]] bool IsReplacement(const Part& before, const Part& after);

}  // namespace inventory
