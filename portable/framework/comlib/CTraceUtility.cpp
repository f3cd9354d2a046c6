#include "qel/CTraceUtility.h"

#include "comlib/TraceSink.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

namespace {

constexpr int kMessageLevel = 0;

// Whoever traces is in trouble already: a text that is missing must not be the end.
const char* TextOf(const char* text) noexcept {
    return text == nullptr ? "(null)" : text;
}

// Most lines fit; a report line of any length is formatted in memory of its own, and cut where there is none.
constexpr std::size_t kUsualLength = 1024;

// Not inlined: what it needs would have to be saved for every line that nobody wants.
__attribute__((format(printf, 3, 0), noinline)) void FormatAndEmit(const char* category, int level,
                                                                   const char* format,
                                                                   va_list arguments) noexcept {
    const qel::ErrnoKeeper keeper;
    category = TextOf(category);
    format = TextOf(format);
    char usual[kUsualLength];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(usual, sizeof usual, format, arguments);
    if (length < 0) {
        qel::EmitTrace({category, level, format});
    } else if (static_cast<std::size_t>(length) < sizeof usual) {
        qel::EmitTrace({category, level, {usual, static_cast<std::size_t>(length)}});
    } else {
        try {
            std::string large(static_cast<std::size_t>(length), '\0');
            std::vsnprintf(large.data(), large.size() + 1, format, again);
            qel::EmitTrace({category, level, large});
        } catch (const std::bad_alloc&) {
            qel::EmitTrace({category, level, {usual, sizeof usual - 1}});
        }
    }
    va_end(again);
}

}  // namespace

void CTraceUtility::WriteDebug(const char* category, int level, const char* format, ...) {
    if (!qel::IsTraced(level)) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    FormatAndEmit(category, level, format, arguments);
    va_end(arguments);
}

void CTraceUtility::WriteTrace(const char* category, const char* messageId, const char* text) {
    if (!qel::IsTraced(kMessageLevel)) {
        return;
    }
    const qel::ErrnoKeeper keeper;
    try {
        qel::EmitTrace(
            {TextOf(category), kMessageLevel, std::string(TextOf(messageId)) + ' ' + TextOf(text)});
    } catch (const std::bad_alloc&) {
        qel::EmitTrace({TextOf(category), kMessageLevel, TextOf(messageId)});
    }
}
