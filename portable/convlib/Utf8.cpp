#include "Utf8.h"

namespace convlib {
namespace {

unsigned int ByteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/// What a lead byte promises. The second byte's range alone rules out overlong forms, surrogates and what
/// lies beyond U+10FFFF; every later byte is 0x80 to 0xBF.
struct Promise {
    std::size_t length;  ///< 0: no sequence begins with this byte
    unsigned int leadBits;
    unsigned int secondMin;
    unsigned int secondMax;
};

Promise PromiseOf(unsigned int lead) {
    if (lead < 0xC2 || lead > 0xF4) {
        return {0, 0, 0, 0};
    }
    if (lead < 0xE0) {
        return {2, lead & 0x1FU, 0x80, 0xBF};
    }
    if (lead < 0xF0) {
        return {3, lead & 0x0FU, lead == 0xE0 ? 0xA0U : 0x80U, lead == 0xED ? 0x9FU : 0xBFU};
    }
    return {4, lead & 0x07U, lead == 0xF0 ? 0x90U : 0x80U, lead == 0xF4 ? 0x8FU : 0xBFU};
}

}  // namespace

Utf8Unit ReadUtf8(std::string_view text) {
    const unsigned int lead = ByteAt(text, 0);
    if (lead < 0x80) {
        return {true, lead, 1};
    }
    const Promise promise = PromiseOf(lead);
    if (promise.length == 0) {
        return {false, 0, 1};
    }
    char32_t character = promise.leadBits;
    for (std::size_t at = 1; at < promise.length; ++at) {
        const unsigned int min = at == 1 ? promise.secondMin : 0x80;
        const unsigned int max = at == 1 ? promise.secondMax : 0xBF;
        if (at == text.size() || ByteAt(text, at) < min || ByteAt(text, at) > max) {
            return {false, 0, at};
        }
        character = (character << 6U) | (ByteAt(text, at) & 0x3FU);
    }
    return {true, character, promise.length};
}

}  // namespace convlib
