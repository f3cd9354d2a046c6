#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace inventory {

/// Why a text is no RAID document, in one line.
class DocumentError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// One item of a document, for instance
///
///     <Item Name="PD Status" Value="NO ERROR" Valid="TRUE"/>
///
/// Its children stand directly behind it in the document's list, with theirs between them.
struct Item {
    std::string name;
    std::string value;
    std::string lostParent;  ///< the parent that it names and that is not there; else empty
    bool hasValue = false;   ///< Value="" is there, though empty
    bool isPlaceholder = false;
    std::size_t size = 1;  ///< of itself with everything below it
};

/// Items that stand side by side, each with everything below it.
class Siblings final {
  public:
    class Iterator final {
      public:
        explicit Iterator(const Item* item) : m_Item(item) {}
        const Item& operator*() const { return *m_Item; }
        const Item* operator->() const { return m_Item; }
        Iterator& operator++() {
            m_Item += m_Item->size;
            return *this;
        }
        bool operator==(const Iterator&) const = default;

      private:
        const Item* m_Item;
    };

    Siblings(const Item* first, const Item* end) : m_First(first), m_End(end) {}
    [[nodiscard]] Iterator begin() const { return Iterator(m_First); }
    [[nodiscard]] Iterator end() const { return Iterator(m_End); }
    [[nodiscard]] bool IsEmpty() const { return m_First == m_End; }

  private:
    const Item* m_First;
    const Item* m_End;
};

/// The RAID document as a program reads it: what it says is in docs/xml.md. Never changed once it is read, so
/// that any thread may look at it; items live as long as the document does, also when it is moved.
class Document final {
  public:
    /// Deeper items than this are in no real document; whoever walks through one may call himself for each
    /// level.
    static constexpr std::size_t kMaxDepth = 256;

    /// Throws DocumentError for anything but a document of the known version.
    [[nodiscard]] static Document Read(std::string_view xml);

    Document(Document&&) = default;
    Document& operator=(Document&&) = default;
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document() = default;

    [[nodiscard]] Siblings Roots() const { return {m_Items.data(), m_Items.data() + m_Items.size()}; }
    [[nodiscard]] std::size_t Count() const { return m_Items.size(); }

  private:
    explicit Document(std::vector<Item> items) : m_Items(std::move(items)) {}

    std::vector<Item> m_Items;
};

/// The XML of a document, on one line, from which it can be read again.
[[nodiscard]] std::string XmlOf(const Document& document);

[[nodiscard]] inline Siblings ChildrenOf(const Item& item) {
    return {&item + 1, &item + item.size};
}

}  // namespace inventory
