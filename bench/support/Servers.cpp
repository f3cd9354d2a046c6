#include "Servers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <utility>

namespace bench {
namespace {

constexpr std::uint64_t kHundred = 100;
constexpr std::uint64_t kHour = 3600;
constexpr std::uint64_t kHoursOfYear = 8766;

// Numbers that look unlike each other and are the same every time.
std::uint64_t Scatter(std::uint64_t number) {
    number += 0x9E3779B97F4A7C15U;
    number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
    number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
    return number ^ (number >> 31U);
}

template <typename Number>
void AppendNumber(std::string& text, Number number) {
    std::array<char, 32> digits{};
    const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    text.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

}  // namespace

bool HasLostDrive(const Moment& moment) {
    constexpr std::uint64_t kScrapes = 500;
    constexpr std::uint64_t kFailing = 5;
    return (moment.scrape + Scatter(moment.server)) % kScrapes < kFailing;
}

Printed::Printed(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
        AddLine(text.substr(0, end));
        text.remove_prefix(end);
    }
}

Printed::Varying Printed::VaryingOf(std::string_view line) {
    static constexpr std::array<std::pair<std::string_view, Varying>, 8> kNames = {{
        {"raid_drive_temperature_celsius", Varying::Temperature},
        {"raid_drive_media_errors_total", Varying::Errors},
        {"raid_drive_other_errors_total", Varying::Errors},
        {"raid_drive_smart_errors_total", Varying::Errors},
        {"raid_drive_power_on_seconds", Varying::Hours},
        {"raid_tool_duration_seconds", Varying::Duration},
        {"raid_last_success_timestamp_seconds", Varying::Now},
        {"raid_last_inquiry_timestamp_seconds", Varying::Now},
    }};
    for (const auto& [name, varying] : kNames) {
        if (line.starts_with(name)) {
            return varying;
        }
    }
    return Varying::Nothing;
}

void Printed::AddLine(std::string_view line) {
    const Varying varying = VaryingOf(line);
    if (varying == Varying::Nothing) {
        return AddSerials(line);
    }
    const std::size_t value = line.rfind(' ') + 1;
    AddSerials(line.substr(0, value));
    m_Pieces.push_back({"", varying, std::strtod(std::string(line.substr(value)).c_str(), nullptr)});
    AddSerials("\n");
}

void Printed::AddSerials(std::string_view text) {
    constexpr std::string_view kSerial = "serial=\"";
    if (m_Pieces.empty() || m_Pieces.back().varying != Varying::Nothing) {
        m_Pieces.emplace_back();
    }
    for (std::size_t found = 0; (found = text.find(kSerial)) != std::string_view::npos;) {
        const std::size_t end = text.find('"', found + kSerial.size());
        if (end == std::string_view::npos) {
            break;
        }
        m_Pieces.back().text += text.substr(0, end);
        // What has no serial number gets none.
        if (end != found + kSerial.size()) {
            m_Pieces.back().varying = Varying::Serial;
            m_Pieces.emplace_back();
        }
        text.remove_prefix(end);
    }
    m_Pieces.back().text += text;
}

std::string Printed::At(const Moment& moment) const {
    std::string text;
    std::uint64_t number = 0;
    for (const Piece& piece : m_Pieces) {
        text += piece.text;
        Append(text, piece, moment, Scatter(moment.server * m_Pieces.size() + number++));
    }
    return text;
}

// `chance` belongs to this number of this server, and stays.
void Printed::Append(std::string& text, const Piece& piece, const Moment& moment, std::uint64_t chance) {
    constexpr std::uint64_t kDegrees = 3;
    constexpr std::uint64_t kScrapesOfError = 10;
    switch (piece.varying) {
        case Varying::Nothing:
            return;
        case Varying::Serial:
            text += '-';
            return AppendNumber(text, moment.server);
        case Varying::Temperature:
            return AppendNumber(text,
                                piece.base + static_cast<double>(Scatter(chance + moment.scrape) % kDegrees));
        case Varying::Errors:
            return AppendNumber(
                text, piece.base +
                          static_cast<double>(chance % kHundred == 0 ? moment.scrape / kScrapesOfError : 0));
        case Varying::Hours:
            return AppendNumber(
                text, piece.base + static_cast<double>(moment.seconds / kHour % kHoursOfYear * kHour));
        case Varying::Duration:
            return AppendNumber(
                text,
                piece.base + static_cast<double>(Scatter(chance + moment.scrape) % kHundred) / kHundred);
        case Varying::Now:
            return AppendNumber(text, moment.seconds);
    }
}

}  // namespace bench
