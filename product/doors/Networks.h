#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace doors {

/// Addresses and nets: "192.0.2.7", "192.0.2.0/24", "2001:db8::/32". A plain value.
class Networks final {
  public:
    /// Nothing where one of them is neither.
    [[nodiscard]] static std::optional<Networks> From(const std::vector<std::string>& texts);

    [[nodiscard]] bool Contain(const std::string& address) const;

  private:
    struct Net {
        std::array<unsigned char, 16> address;  ///< one of IPv4 as it is written in IPv6
        unsigned bits;
    };

    std::vector<Net> m_Nets;
};

}  // namespace doors
