#include "http/Framing.h"

#include <algorithm>
#include <cstring>

namespace http {
namespace {

std::size_t CountOf(const std::vector<Field>& headers, const std::string& name) {
    return static_cast<std::size_t>(std::count_if(headers.begin(), headers.end(), [&](const Field& each) {
        return Find({{each.first, ""}}, name) != nullptr;
    }));
}

/// Some servers read "Content-Length : 4" as what it looks like, others as a header of another name.
bool IsHeaderName(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char each) {
        return each > ' ' && each < 0x7F && std::strchr("\"(),/:;<=>?@[\\]{}", each) == nullptr;
    });
}

}  // namespace

bool IsAmbiguous(const Request& request) {
    const std::size_t lengths = CountOf(request.headers, "Content-Length");
    const std::size_t encodings = CountOf(request.headers, "Transfer-Encoding");
    const std::string* const length = request.Header("Content-Length");
    const std::string* const encoding = request.Header("Transfer-Encoding");
    const bool isNumber = length == nullptr || (!length->empty() && length->size() < 19 &&
                                                length->find_first_not_of("0123456789") == std::string::npos);
    const bool hasNames = std::all_of(request.headers.begin(), request.headers.end(),
                                      [](const Field& each) { return IsHeaderName(each.first); });
    return !hasNames || lengths + encodings > 1 || !isNumber ||
           (encoding != nullptr && *encoding != "chunked") || CountOf(request.headers, "Host") > 1;
}

std::size_t LengthOf(const Request& request) {
    const std::string* const length = request.Header("Content-Length");
    return length == nullptr ? 0 : std::stoull(*length);
}

bool IsHeaderText(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char each) {
        return (static_cast<unsigned char>(each) < 0x20 && each != '\t') || each == 0x7F;
    });
}

}  // namespace http
