#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <streambuf>

namespace vdksim {

// Carries a report to a descriptor that somebody else owns, and stops after so many bytes when a limit is
// given: the stream on top of it then goes bad, which is how whoever writes a text without end learns to
// stop. What is still held is written by pubsync(), not by the destructor.
class Output final : public std::streambuf {
  public:
    Output(int descriptor, std::optional<std::uint64_t> limit);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // The system's error number when a write has failed, 0 while all is well or only the limit was met.
    [[nodiscard]] int Error() const { return m_Error; }

  protected:
    int_type overflow(int_type character) override;
    int sync() override;

  private:
    bool WriteHeld();

    std::array<char, std::size_t{64} * 1024> m_Buffer;
    int m_Descriptor;
    std::optional<std::uint64_t> m_Left;
    int m_Error = 0;
};

}  // namespace vdksim
