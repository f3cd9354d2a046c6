#include "http/Message.h"

#include "basics/Words.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace http {
namespace {

/// `list` is that of an If-None-Match: `"a", W/"b"`. Weak comparison, as that header asks for.
bool Names(std::string_view list, std::string_view etag) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(','), list.size());
        std::string_view each = basics::Trimmed(list.substr(0, end));
        if (each.substr(0, 2) == "W/") {
            each.remove_prefix(2);
        }
        if (each == "*" || each == etag) {
            return true;
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

}  // namespace

const std::string* Find(const std::vector<Field>& fields, std::string_view name) {
    const auto found = std::find_if(fields.begin(), fields.end(), [&](const Field& field) {
        return basics::IsSameWord(field.first, name);
    });
    return found == fields.end() ? nullptr : &found->second;
}

Response MakeResponse(int status, const std::string& contentType, std::string text) {
    return {status, {{"Content-Type", contentType}}, std::make_shared<const std::string>(std::move(text))};
}

Response MakeWords(int status, const std::string& words) {
    return MakeResponse(status, "text/plain; charset=utf-8", words + '\n');
}

Response WithEtag(const Request& request, Response response, const std::string& etag) {
    response.headers.emplace_back("ETag", etag);
    const std::string* const known = request.Header("If-None-Match");
    if (known != nullptr && Names(*known, etag)) {
        response.status = 304;
        response.body.reset();
    }
    return response;
}

// FNV-1a. Nothing depends on its being hard to forge: who would be deceived is who forges it.
std::string EtagOf(std::string_view text) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    }
    std::array<char, 24> etag{};
    const int length =
        std::snprintf(etag.data(), etag.size(), "\"%016llx\"", static_cast<unsigned long long>(hash));
    return {etag.data(), static_cast<std::size_t>(length)};
}

}  // namespace http
