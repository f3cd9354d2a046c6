#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace vdksim {

Output::Output(int descriptor, std::optional<std::uint64_t> limit) : m_Descriptor(descriptor), m_Left(limit) {
    setp(m_Buffer.data(), m_Buffer.data() + m_Buffer.size());
}

Output::int_type Output::overflow(int_type character) {
    if (!WriteHeld()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(character);
        pbump(1);
    }
    return traits_type::not_eof(character);
}

int Output::sync() {
    return WriteHeld() ? 0 : -1;
}

bool Output::WriteHeld() {
    const char* next = pbase();
    std::uint64_t count = static_cast<std::uint64_t>(pptr() - pbase());
    const bool cut = m_Left && count > *m_Left;
    if (m_Left) {
        count = std::min(count, *m_Left);
        *m_Left -= count;
    }
    setp(m_Buffer.data(), m_Buffer.data() + m_Buffer.size());
    while (count > 0 && m_Error == 0) {
        const ssize_t written = ::write(m_Descriptor, next, count);
        if (written >= 0) {
            next += written;
            count -= static_cast<std::uint64_t>(written);
        } else if (errno != EINTR) {
            m_Error = errno;
        }
    }
    return m_Error == 0 && !cut;
}

}  // namespace vdksim
