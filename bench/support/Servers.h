#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// One server of a fleet, at one of its scrapes.
struct Moment {
    std::uint64_t server = 0;
    std::uint64_t scrape = 0;
    std::uint64_t seconds = 0;  ///< since 1970
};

/// One server in a hundred at any time, each for five scrapes.
[[nodiscard]] bool HasLostDrive(const Moment& moment);

/// What the service has printed of one server, to be told of any, a little different each time. Only numbers
/// change, and serial numbers, which get the server's behind them:
///
///     raid_drive_temperature_celsius{controller="0",enclosure="8",slot="3"} 28
///
/// Never changed once it is read.
class Printed final {
  public:
    explicit Printed(std::string_view text);

    [[nodiscard]] std::string At(const Moment& moment) const;

  private:
    /// What follows a piece of the text.
    enum class Varying {
        Nothing,
        Serial,       ///< the server's number, behind the serial number
        Temperature,  ///< up to two degrees more
        Errors,       ///< of one drive in a hundred, they grow
        Hours,        ///< full hours, in seconds
        Duration,
        Now,
    };
    struct Piece {
        std::string text;
        Varying varying = Varying::Nothing;
        double base = 0;
    };

    [[nodiscard]] static Varying VaryingOf(std::string_view line);
    void AddLine(std::string_view line);
    void AddSerials(std::string_view text);
    static void Append(std::string& text, const Piece& piece, const Moment& moment, std::uint64_t chance);

    std::vector<Piece> m_Pieces;
};

}  // namespace bench
