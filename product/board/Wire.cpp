#include "board/Wire.h"

namespace board {
namespace {

constexpr std::size_t kNumberSize = 8;
constexpr unsigned kByteBits = 8;

}  // namespace

void Packer::Number(std::uint64_t number) {
    for (std::size_t byte = 0; byte < kNumberSize; ++byte) {
        m_Bytes += static_cast<char>(static_cast<unsigned char>(number >> (kByteBits * byte)));
    }
}

void Packer::Text(std::string_view text) {
    Number(text.size());
    m_Bytes += text;
}

std::string_view Unpacker::Take(std::size_t size) {
    if (size > m_Bytes.size()) {
        throw WireError("the message ends too early");
    }
    const std::string_view taken = m_Bytes.substr(0, size);
    m_Bytes.remove_prefix(size);
    return taken;
}

std::uint64_t Unpacker::Number() {
    const std::string_view bytes = Take(kNumberSize);
    std::uint64_t number = 0;
    for (std::size_t byte = 0; byte < kNumberSize; ++byte) {
        number |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[byte])) << (kByteBits * byte);
    }
    return number;
}

std::size_t Unpacker::Count() {
    const std::uint64_t count = Number();
    if (count > m_Bytes.size() / kNumberSize) {
        throw WireError("the message tells of more than it holds");
    }
    return static_cast<std::size_t>(count);
}

bool Unpacker::Flag() {
    const std::uint64_t flag = Number();
    if (flag > 1) {
        throw WireError("the message holds a number that is neither yes nor no");
    }
    return flag == 1;
}

std::string Unpacker::Text() {
    return std::string(Take(static_cast<std::size_t>(Number())));
}

void Unpacker::End() const {
    if (!m_Bytes.empty()) {
        throw WireError("the message goes on behind its end");
    }
}

}  // namespace board
