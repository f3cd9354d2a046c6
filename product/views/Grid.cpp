#include "Grid.h"

#include "basics/Text.h"
#include "basics/Words.h"

#include <algorithm>
#include <utility>

namespace views {
namespace {

constexpr std::size_t kGap = 2;
constexpr std::size_t kShortest = 8;
constexpr std::size_t kTelling = 40;  // what is left of a text that tells what matters at its front
constexpr std::size_t kShortestTitle = 5;
constexpr std::size_t kLongestCell = 200;  // of a cell, however wide the terminal is
constexpr char kNotTold = '-';

std::size_t TotalOf(const std::vector<std::size_t>& widths) {
    std::size_t total = 0;
    for (const std::size_t width : widths) {
        total += width == 0 ? 0 : width + (total == 0 ? 0 : kGap);
    }
    return total;
}

std::size_t ExcessOf(const std::vector<std::size_t>& widths, std::size_t room) {
    const std::size_t total = TotalOf(widths);
    return total > room ? total - room : 0;
}

// What does not begin before the edge is left out, what goes beyond it is shortened.
void CutAt(std::size_t room, std::vector<std::size_t>& widths) {
    std::size_t gap = 0;
    for (std::size_t& width : widths) {
        if (width > 0) {
            gap = std::min(gap, room);
            width = std::min(width, room - gap);
            room -= gap + width;
            gap = kGap;
        }
    }
}

}  // namespace

void Grid::AddRow(std::vector<Cell> row) {
    for (Cell& cell : row) {
        cell.text = basics::Printable(cell.text);
    }
    m_Rows.push_back(std::move(row));
}

std::vector<std::size_t> Grid::TextWidths() const {
    std::vector<std::size_t> widths(m_Columns.size());
    for (const std::vector<Cell>& row : m_Rows) {
        for (std::size_t column = 0; column < widths.size(); ++column) {
            const std::size_t width = std::min(basics::WidthOf(row[column].text), kLongestCell);
            widths[column] = std::max(widths[column], width);
        }
    }
    return widths;
}

// A width of 0: the column is left out. First titles give way, then whole columns, then the widest texts, and
// what stands behind the edge in the end.
std::vector<std::size_t> Grid::WidthsFor(const std::vector<std::size_t>& texts, std::size_t room) const {
    std::vector<std::size_t> widths(m_Columns.size());
    for (std::size_t column = 0; column < m_Columns.size(); ++column) {
        widths[column] =
            texts[column] == 0 ? 0 : std::max(texts[column], basics::WidthOf(m_Columns[column].title));
    }
    const auto excess = [&] { return ExcessOf(widths, room); };
    for (std::size_t column = m_Columns.size(); column-- > 0 && excess() > 0;) {
        const std::size_t shortest = std::max(texts[column], std::min(widths[column], kShortestTitle));
        widths[column] -= std::min(excess(), widths[column] - shortest);
    }
    LeaveOut(room, widths);
    while (excess() > 0) {
        const std::size_t widest = WidestToShorten(widths);
        if (widest == widths.size()) {
            break;
        }
        --widths[widest];
    }
    CutAt(room, widths);
    return widths;
}

// The last one first; but before it goes, a long text gives way.
void Grid::LeaveOut(std::size_t room, std::vector<std::size_t>& widths) const {
    const auto giveWay = [&](std::size_t column, std::size_t least) {
        const std::size_t excess = ExcessOf(widths, room);
        const bool isEnough = m_Columns[column].fit == Fit::ShortenOrOmit && widths[column] >= excess + least;
        widths[column] -= isEnough ? excess : 0;
    };
    for (std::size_t column = m_Columns.size(); column-- > 0;) {
        for (std::size_t before = 0; before < column; ++before) {
            giveWay(before, kTelling);
        }
        giveWay(column, kShortest);
        const bool mayGo = m_Columns[column].fit == Fit::ShortenOrOmit || m_Columns[column].fit == Fit::Omit;
        if (mayGo && ExcessOf(widths, room) > 0) {
            widths[column] = 0;
        }
    }
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

std::string Grid::NotShown(const std::vector<std::size_t>& texts,
                           const std::vector<std::size_t>& widths) const {
    std::vector<std::string> titles;
    for (std::size_t column = 0; column < m_Columns.size(); ++column) {
        if (texts[column] > 0 && widths[column] == 0) {
            titles.push_back(m_Columns[column].title);
        }
    }
    return basics::Joined(titles);
}

std::string Grid::Text(const TerminalStyle& style, std::size_t indentation) const {
    const std::size_t room =
        style.columns == 0 ? std::string::npos : style.columns - std::min(style.columns, indentation);
    const std::vector<std::size_t> texts = TextWidths();
    const std::vector<std::size_t> widths = WidthsFor(texts, room);
    std::string text;
    const auto addLine = [&](const std::string& line) {
        text.append(indentation, ' ').append(line);
        text.erase(text.find_last_not_of(' ') + 1);
        text += '\n';
    };
    const auto addCells = [&](const auto& cellOf) {
        std::string line;
        for (std::size_t column = 0; column < widths.size(); ++column) {
            if (widths[column] == 0) {
                continue;
            }
            line.append(line.empty() ? 0 : kGap, ' ');
            const Cell cell = cellOf(column);
            const std::string shown = basics::Shortened(cell.text, widths[column], cell.mark);
            const std::string padded = m_Columns[column].isNumber ? basics::PadLeft(shown, widths[column])
                                                                  : basics::PadRight(shown, widths[column]);
            line += Colored(padded, cell.look, style);
        }
        addLine(line);
    };
    addCells([&](std::size_t column) { return Cell{m_Columns[column].title}; });
    for (const std::vector<Cell>& row : m_Rows) {
        addCells([&](std::size_t column) {
            Cell cell = row[column];
            if (cell.text.empty() && !cell.isBlank) {
                cell.text.push_back(kNotTold);
            }
            return cell;
        });
    }
    if (const std::string titles = NotShown(texts, widths); !titles.empty()) {
        const std::size_t hang = room == 0 ? 0 : indentation;
        text.append(hang, ' ');
        text.append(Wrapped("not shown for lack of width: " + titles, hang, hang, style)).append(1, '\n');
    }
    return text;
}

namespace {

std::string Between(std::string begin, const std::string& text) {
    return begin.append(text).append("\x1b[0m");
}

}  // namespace

std::string Colored(const std::string& text, Look look, const TerminalStyle& style) {
    constexpr const char* kColors[] = {"", "\x1b[32m", "\x1b[36m", "", "\x1b[35m", "\x1b[33m", "\x1b[1;31m"};
    const std::string color = kColors[static_cast<std::size_t>(look)];
    return style.hasColors && !color.empty() ? Between(color, text) : text;
}

std::string Heading(const std::string& text, const TerminalStyle& style) {
    return style.hasColors ? Between("\x1b[1m", text) : text;
}

std::string Wrapped(std::string_view text, std::size_t column, std::size_t hang, const TerminalStyle& style) {
    if (style.columns == 0) {
        return std::string(text);
    }
    const std::size_t room = style.columns > hang ? style.columns - hang : 1;
    std::string wrapped;
    const auto startLine = [&] {
        wrapped.append(1, '\n').append(hang, ' ');
        column = hang;
    };
    for (bool isFirst = true; isFirst || !text.empty(); isFirst = false) {
        std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        const std::size_t gap = isFirst ? 0 : 1;
        if (column + gap + basics::WidthOf(word) > style.columns) {
            startLine();
        } else {
            wrapped.append(gap, ' ');
            column += gap;
        }
        for (; basics::WidthOf(word) > room; startLine()) {
            const std::size_t front = std::max<std::size_t>(basics::FittingFront(word, room), 1);
            wrapped += word.substr(0, front);
            word.remove_prefix(std::min(front, word.size()));
        }
        wrapped += word;
        column += basics::WidthOf(word);
    }
    return wrapped;
}

}  // namespace views
