#pragma once

#include <unistd.h>

#include <string_view>
#include <utility>

namespace basics {

/// Owns one open file descriptor and closes it; may be empty. Not for files whose close can lose data: those
/// are closed by `Close`, which says how it went.
class Descriptor final {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) noexcept : m_Number(number) {}
    Descriptor(Descriptor&& other) noexcept : m_Number(std::exchange(other.m_Number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        if (this != &other) {
            (void)Close();
            m_Number = std::exchange(other.m_Number, -1);
        }
        return *this;
    }
    ~Descriptor() { (void)Close(); }

    [[nodiscard]] bool IsOpen() const noexcept { return m_Number >= 0; }
    [[nodiscard]] int Number() const noexcept { return m_Number; }

    /// False, with `errno` set, when the system reports an error. The descriptor is gone either way.
    bool Close() noexcept {
        const int number = std::exchange(m_Number, -1);
        return number < 0 || ::close(number) == 0;
    }

    /// Whoever gets the number closes it.
    [[nodiscard]] int Release() noexcept { return std::exchange(m_Number, -1); }

  private:
    int m_Number = -1;
};

/// Writes all of a text. 0, or the error that ended it.
int WriteWhole(int descriptor, std::string_view text) noexcept;

}  // namespace basics
