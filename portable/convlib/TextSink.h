#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace convlib {

/// Takes text as `snprintf` does: keeps what fits into the caller's buffer and counts everything. Without a
/// buffer it measures, so that one piece of code first tells the size of a text and then writes it, never
/// past the end.
class TextSink final {
  public:
    TextSink() = default;
    explicit TextSink(std::span<char> buffer) : m_Next(buffer.data()), m_Room(buffer.size()) {}

    void Append(std::string_view text) {
        m_Size += text.size();
        if (text.size() > m_Room) {
            m_Room = 0;
            return;
        }
        text.copy(m_Next, text.size());
        m_Next += text.size();
        m_Room -= text.size();
    }

    /// The size of everything appended, kept or not.
    [[nodiscard]] std::size_t Size() const { return m_Size; }

  private:
    char* m_Next = nullptr;
    std::size_t m_Room = 0;
    std::size_t m_Size = 0;
};

}  // namespace convlib
