#include "Networks.h"

#include "basics/Words.h"

#include <arpa/inet.h>

#include <algorithm>

namespace doors {
namespace {

using Address = std::array<unsigned char, 16>;

constexpr unsigned kBits = 128;
constexpr unsigned kFourBits = 32;
constexpr unsigned kByteBits = 8;

std::optional<Address> AddressFrom(const std::string& text) {
    Address address{};
    if (::inet_pton(AF_INET6, text.c_str(), address.data()) == 1) {
        return address;
    }
    constexpr std::size_t kFour = 12;
    address = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
    if (::inet_pton(AF_INET, text.c_str(), address.data() + kFour) == 1) {
        return address;
    }
    return std::nullopt;
}

bool Agree(const Address& one, const Address& other, unsigned bits) {
    const auto whole = static_cast<std::ptrdiff_t>(bits / kByteBits);
    if (!std::equal(one.begin(), one.begin() + whole, other.begin())) {
        return false;
    }
    const unsigned rest = bits % kByteBits;
    const auto at = static_cast<std::size_t>(whole);
    return rest == 0 || (one[at] ^ other[at]) >> (kByteBits - rest) == 0;
}

}  // namespace

std::optional<Networks> Networks::From(const std::vector<std::string>& texts) {
    Networks networks;
    for (const std::string& text : texts) {
        const std::size_t slash = std::min(text.find('/'), text.size());
        const std::string front = text.substr(0, slash);
        const std::optional<Address> address = AddressFrom(front);
        const unsigned width = front.find(':') == std::string::npos ? kFourBits : kBits;
        const std::optional<unsigned> bits =
            slash == text.size() ? width : basics::NumberFrom<unsigned>(text.substr(slash + 1));
        if (!address || !bits || *bits > width) {
            return std::nullopt;
        }
        networks.m_Nets.push_back({*address, kBits - width + *bits});
    }
    return networks;
}

bool Networks::Contain(const std::string& text) const {
    const std::optional<Address> address = AddressFrom(text);
    return address && std::any_of(m_Nets.begin(), m_Nets.end(),
                                  [&](const Net& net) { return Agree(net.address, *address, net.bits); });
}

}  // namespace doors
