#include "Callers.h"

#include "Networks.h"
#include "basics/Words.h"

#include <gnutls/gnutls.h>

#include <algorithm>
#include <string_view>

namespace doors {

using http::Request;

std::optional<Credentials> CredentialsOf(const std::string& header) {
    constexpr std::string_view kScheme = "basic ";
    if (!basics::IsSameWord(header.substr(0, kScheme.size()), kScheme)) {
        return std::nullopt;
    }
    std::string encoded = header.substr(kScheme.size());
    const gnutls_datum_t text{reinterpret_cast<unsigned char*>(encoded.data()),
                              static_cast<unsigned>(encoded.size())};
    gnutls_datum_t decoded{};
    if (gnutls_base64_decode2(&text, &decoded) != 0) {
        return std::nullopt;
    }
    const std::string both(reinterpret_cast<const char*>(decoded.data), decoded.size);
    gnutls_free(decoded.data);
    const std::size_t colon = both.find(':');
    return colon == std::string::npos
               ? std::nullopt
               : std::optional(Credentials{both.substr(0, colon), both.substr(colon + 1)});
}

bool IsFromElsewhere(const Request& request) {
    const std::string* const site = request.Header("Sec-Fetch-Site");
    if (site != nullptr) {
        return *site != "same-origin" && *site != "none";
    }
    const std::string* const origin = request.Header("Origin");
    const std::string* const host = request.Header("Host");
    return origin != nullptr &&
           (host == nullptr || origin->substr(std::min(origin->find("//") + 2, origin->size())) != *host);
}

bool IsForThisMachine(const Request& request) {
    static const std::optional<Networks> kLoopback = Networks::From({"127.0.0.0/8", "::1"});
    const std::string* const header = request.Header("Host");
    std::string_view host = header == nullptr ? std::string_view() : *header;
    if (!host.empty() && host.front() == '[') {
        host = host.substr(1, std::min(host.find(']'), host.size()) - 1);
    } else {
        host = host.substr(0, host.find(':'));
    }
    return basics::IsSameWord(host, "localhost") || kLoopback->Contain(std::string(host));
}

}  // namespace doors
