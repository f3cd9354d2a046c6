#include "views/Grid.h"

#include "views/Text.h"

#include <algorithm>
#include <utility>

namespace views {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kShortest = 8;
constexpr std::size_t kShortestTitle = 5;
constexpr char kNotTold = '-';

std::size_t TotalOf(const std::vector<std::size_t>& widths) {
    std::size_t total = 0;
    for (const std::size_t width : widths) {
        total += width == 0 ? 0 : width + (total == 0 ? 0 : kGap);
    }
    return total;
}

void TrimEnd(std::string& line) {
    line.erase(line.find_last_not_of(' ') + 1);
}

}  // namespace

void Grid::AddRow(std::vector<Cell> row) {
    for (Cell& cell : row) {
        cell.text = Printable(cell.text);
    }
    m_Rows.push_back(std::move(row));
}

// A width of 0: the column is left out. First titles give way, then whole columns, then the widest texts.
std::vector<std::size_t> Grid::WidthsFor(const TerminalStyle& style, std::size_t indentation) const {
    std::vector<std::size_t> texts(m_Columns.size());
    std::vector<std::size_t> widths(m_Columns.size());
    for (std::size_t column = 0; column < m_Columns.size(); ++column) {
        for (const std::vector<Cell>& row : m_Rows) {
            texts[column] = std::max(texts[column], WidthOf(row[column].text));
        }
        widths[column] = texts[column] == 0 ? 0 : std::max(texts[column], WidthOf(m_Columns[column].title));
    }
    if (style.columns == 0) {
        return widths;
    }
    const std::size_t room = style.columns > indentation ? style.columns - indentation : 1;
    const auto excess = [&] { return TotalOf(widths) > room ? TotalOf(widths) - room : 0; };
    for (std::size_t column = m_Columns.size(); column-- > 0 && excess() > 0;) {
        const std::size_t shortest = std::max(texts[column], std::min(widths[column], kShortestTitle));
        widths[column] -= std::min(excess(), widths[column] - shortest);
    }
    for (std::size_t column = m_Columns.size(); column-- > 0 && excess() > 0;) {
        const bool mayShorten = m_Columns[column].fit == Fit::ShortenOrOmit;
        if (mayShorten && widths[column] >= excess() + kShortest) {
            widths[column] -= excess();
        } else if (mayShorten || m_Columns[column].fit == Fit::Omit) {
            widths[column] = 0;
        }
    }
    while (excess() > 0) {
        const std::size_t widest = WidestToShorten(widths);
        if (widest == widths.size()) {
            break;
        }
        --widths[widest];
    }
    return widths;
}

std::size_t Grid::WidestToShorten(const std::vector<std::size_t>& widths) const {
    std::size_t widest = widths.size();
    for (std::size_t column = 0; column < widths.size(); ++column) {
        if (m_Columns[column].fit == Fit::Shorten && widths[column] > kShortest &&
            (widest == widths.size() || widths[column] > widths[widest])) {
            widest = column;
        }
    }
    return widest;
}

std::string Grid::Text(const TerminalStyle& style, std::size_t indentation) const {
    const std::vector<std::size_t> widths = WidthsFor(style, indentation);
    std::string text;
    const auto writeLine = [&](const auto& cellOf) {
        std::string line(indentation, ' ');
        std::size_t room = style.columns == 0 ? std::string::npos : style.columns;
        room -= std::min(room, indentation);
        bool isFirst = true;
        for (std::size_t column = 0; column < widths.size() && room > 0; ++column) {
            if (widths[column] == 0) {
                continue;
            }
            if (!isFirst) {
                line.append(std::min(room, kGap), ' ');
                room -= std::min(room, kGap);
            }
            isFirst = false;
            const std::size_t width = std::min(widths[column], room);
            room -= width;
            const Cell cell = cellOf(column);
            const std::string shown = Shortened(cell.text, width);
            const std::string padded =
                m_Columns[column].isNumber ? PadLeft(shown, width) : PadRight(shown, width);
            line += cell.level ? Colored(padded, *cell.level, style) : padded;
        }
        TrimEnd(line);
        text += line + '\n';
    };
    writeLine([&](std::size_t column) { return Cell{m_Columns[column].title}; });
    for (const std::vector<Cell>& row : m_Rows) {
        writeLine([&](std::size_t column) {
            Cell cell = row[column];
            if (cell.text.empty() && !cell.isBlank) {
                cell.text.push_back(kNotTold);
            }
            return cell;
        });
    }
    return text;
}

namespace {

std::string Between(const char* begin, const std::string& text) {
    return std::string(begin).append(text).append("\x1b[0m");
}

}  // namespace

std::string Colored(const std::string& text, inventory::Level level, const TerminalStyle& style) {
    constexpr const char* kColors[] = {"\x1b[32m", "\x1b[35m", "\x1b[33m", "\x1b[1;31m"};
    return style.hasColors ? Between(kColors[static_cast<std::size_t>(level)], text) : text;
}

std::string Heading(const std::string& text, const TerminalStyle& style) {
    return style.hasColors ? Between("\x1b[1m", text) : text;
}

}  // namespace views
