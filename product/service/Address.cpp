#include "Configuration.h"
#include "basics/Words.h"

#include <arpa/inet.h>

#include <array>
#include <string_view>

namespace service {
namespace {

constexpr std::string_view kUnix = "unix:";
constexpr std::string_view kPlain = "http://";
constexpr std::string_view kEncrypted = "https://";
constexpr std::size_t kLongestPath = 107;  // of a Unix socket

bool TakeFront(std::string_view& text, std::string_view front) {
    const bool isThere = text.substr(0, front.size()) == front;
    text.remove_prefix(isThere ? front.size() : 0);
    return isThere;
}

enum class Reach { Nowhere, ThisMachine, Beyond };

Reach ReachOf(const std::string& host) {
    in_addr four{};
    in6_addr six{};
    if (::inet_pton(AF_INET, host.c_str(), &four) == 1) {
        constexpr unsigned kNetBits = 24;
        constexpr std::uint32_t kLoopbackNet = 127;
        return ntohl(four.s_addr) >> kNetBits == kLoopbackNet ? Reach::ThisMachine : Reach::Beyond;
    }
    if (::inet_pton(AF_INET6, host.c_str(), &six) == 1) {
        return IN6_IS_ADDR_LOOPBACK(&six) ? Reach::ThisMachine : Reach::Beyond;
    }
    return Reach::Nowhere;
}

std::optional<Address> InternetAddress(Address address, std::string_view rest) {
    const bool hasBrackets = !rest.empty() && rest.front() == '[';
    const std::size_t colon = hasBrackets ? rest.find("]:") : rest.find(':');
    if (colon == std::string_view::npos) {
        return std::nullopt;
    }
    address.host = rest.substr(hasBrackets ? 1 : 0, colon - (hasBrackets ? 1 : 0));
    const std::optional<std::uint16_t> port =
        basics::NumberFrom<std::uint16_t>(rest.substr(colon + (hasBrackets ? 2 : 1)));
    if (!port || *port == 0 || hasBrackets != (address.host.find(':') != std::string::npos)) {
        return std::nullopt;
    }
    address.port = *port;
    return address;
}

}  // namespace

std::optional<Address> AddressFrom(const std::string& text) {
    Address address{.text = text};
    std::string_view rest = text;
    if (TakeFront(rest, kUnix)) {
        address.path = rest;
        const bool isPath = !rest.empty() && rest.front() == '/' && rest.size() <= kLongestPath &&
                            rest.find('\0') == std::string_view::npos;
        return isPath ? std::optional(address) : std::nullopt;
    }
    const bool isPlain = TakeFront(rest, kPlain);
    address.isEncrypted = !isPlain && TakeFront(rest, kEncrypted);
    std::optional<Address> read = InternetAddress(address, rest);
    const Reach reach = read ? ReachOf(read->host) : Reach::Nowhere;
    if (reach == Reach::Nowhere || (reach == Reach::Beyond && isPlain)) {
        return std::nullopt;
    }
    read->isEncrypted = read->isEncrypted || reach == Reach::Beyond;
    return read;
}

}  // namespace service
