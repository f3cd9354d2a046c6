#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace board {

/// Bytes that are not what was to be sent.
class WireError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Puts numbers and texts one behind the other: a number as 8 bytes, the lowest first, a text as its length
/// and its bytes.
class Packer final {
  public:
    void Number(std::uint64_t number);
    void Text(std::string_view text);
    [[nodiscard]] std::string Take() { return std::move(m_Bytes); }

  private:
    std::string m_Bytes;
};

/// Takes them out again, in the same order. What does not fit throws WireError; nothing is made that is
/// larger than the bytes that there are.
class Unpacker final {
  public:
    /// The bytes must outlive it.
    explicit Unpacker(std::string_view bytes) : m_Bytes(bytes) {}

    [[nodiscard]] std::uint64_t Number();
    /// Of things that take at least a number each.
    [[nodiscard]] std::size_t Count();
    [[nodiscard]] bool Flag();
    [[nodiscard]] std::string Text();
    /// Nothing may be left.
    void End() const;

  private:
    [[nodiscard]] std::string_view Take(std::size_t size);

    std::string_view m_Bytes;
};

}  // namespace board
