#pragma once

#include <istream>
#include <streambuf>
#include <string_view>

namespace fuzzing {

/// A report in memory for whoever reads an open file: text that lives elsewhere, with positions as a file's
/// are.
class MemoryReport final : public std::streambuf {
  public:
    explicit MemoryReport(std::string_view text) {
        // The buffer is only read; its base class has no constant pointers.
        char* const begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }

  protected:
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode /*which*/) override {
        const char* const base = from == std::ios::beg ? eback() : from == std::ios::cur ? gptr() : egptr();
        const off_type at = base - eback() + offset;
        if (at < 0 || at > egptr() - eback()) {
            return pos_type(off_type(-1));
        }
        setg(eback(), eback() + at, egptr());
        return pos_type(at);
    }

    pos_type seekpos(pos_type at, std::ios::openmode which) override {
        return seekoff(off_type(at), std::ios::beg, which);
    }
};

}  // namespace fuzzing
