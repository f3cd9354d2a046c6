#include "Url.h"

#include "basics/Failure.h"
#include "basics/Words.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cstdint>

namespace telling {
namespace {

[[noreturn]] void Refuse(const std::string& why) {
    throw basics::Failure(basics::Failure::Kind::Use, why);
}

bool IsUrlCharacter(char character) {
    constexpr std::string_view kOthers = "-._~:/?[]@!$&'()*+,;=%";
    return basics::IsAlphanumeric(character) || kOthers.find(character) != std::string_view::npos;
}

bool IsName(std::string_view host) {
    return !host.empty() && std::all_of(host.begin(), host.end(), [](char character) {
        return basics::IsAlphanumeric(character) || character == '-' || character == '.' || character == '_';
    });
}

bool IsAddressOfSix(const std::string& host) {
    in6_addr address{};
    return ::inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

void CheckPort(std::string_view port) {
    const auto number = basics::NumberFrom<std::uint16_t>(port);
    if (!number || *number == 0) {
        Refuse("the port \"" + std::string(port) + "\" is no number from 1 to 65535");
    }
}

// "alerts.example.org:8443", "[::1]:8080"
std::string HostIn(std::string_view authority) {
    std::string host;
    std::string_view rest;
    if (authority.starts_with('[')) {
        const std::size_t end = std::min(authority.find(']'), authority.size());
        host = authority.substr(1, end - 1);
        rest = authority.substr(std::min(end + 1, authority.size()));
        if (end == authority.size() || !IsAddressOfSix(host)) {
            Refuse("what stands in brackets is no IPv6 address");
        }
    } else {
        const std::size_t end = std::min(authority.find(':'), authority.size());
        host = authority.substr(0, end);
        rest = authority.substr(end);
        if (!IsName(host)) {
            Refuse("it names no host");
        }
    }
    if (!rest.empty()) {
        CheckPort(rest.starts_with(':') ? rest.substr(1) : rest);
    }
    return host;
}

}  // namespace

Url Url::From(std::string_view text) {
    if (!std::all_of(text.begin(), text.end(), IsUrlCharacter)) {
        Refuse("it holds a character that no URL has; write it as %20 and the like");
    }
    const std::size_t scheme = text.find("://");
    const bool isSecure = scheme != std::string_view::npos && text.substr(0, scheme) == "https";
    if (!isSecure && (scheme == std::string_view::npos || text.substr(0, scheme) != "http")) {
        Refuse("it does not begin with https://");
    }
    text.remove_prefix(scheme + 3);
    const std::string_view authority = text.substr(0, text.find_first_of("/?"));
    if (authority.find('@') != std::string_view::npos) {
        Refuse("a name and a password are not for a URL; put them into headers_file");
    }
    return {isSecure, HostIn(authority)};
}

bool Url::IsLoopback() const {
    in_addr four{};
    if (::inet_pton(AF_INET, host.c_str(), &four) == 1) {
        constexpr unsigned kLoopback = 127;
        return (ntohl(four.s_addr) >> 24U) == kLoopback;
    }
    in6_addr six{};
    return basics::IsSameWord(host, "localhost") ||
           (::inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six));
}

}  // namespace telling
