#pragma once

#include "qel/QelExport.h"

#include <string>
#include <vector>

/// Text helpers. Independent of the locale; may throw std::bad_alloc.
class QEL_API CStringUtil {
  public:
    CStringUtil() = delete;

    /// Decimal digits, with a minus sign where needed.
    static std::string NumberToTString(long number);

    /// Leading decimal digits behind white space and an optional sign: "12abc" is 12, "abc" is 0. What does
    /// not fit becomes the nearest number that does.
    static long TStringToNumber(const std::string& text);

    /// Text of the program's narrow encoding as framework text; the same bytes on this platform. Null gives
    /// "".
    static std::string StringToTstring(const char* text);

    /// Replaces `parts` by the pieces between the dots: "4.1" gives "4" and "1"; "" gives one empty piece.
    static void SplitByDot(const std::string& text, std::vector<std::string>& parts);

    /// Replaces every `from` in `text` by `to`, front to back; an empty `from` changes nothing.
    static void strReplace(std::string& text, const std::string& from, const std::string& to);
};
