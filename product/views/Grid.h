#pragma once

#include "Look.h"
#include "views/Views.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace views {

/// A table of texts in aligned columns:
///
///     DRIVE  SLOT  STATUS     SIZE
///     PD0       0  ONLINE     558.406 GB
///     PD12      4  HOT SPARE  558.406 GB
///
/// Where it is too wide, titles are shortened, then columns that may be left out are, the last one first, if
/// long texts cannot give way as far as they still tell something; then the widest of those that may be
/// shortened. Lines below tell which columns had no room:
///
///     not shown for lack of width: MODEL, SERIAL NUMBER
///
/// No text is longer than anybody reads, however wide it may be.
class Grid final {
  public:
    enum class Fit { Fixed, Shorten, ShortenOrOmit, Omit };

    struct Column {
        std::string title;
        Fit fit = Fit::Fixed;
        bool isNumber = false;  ///< stands to the right
    };

    struct Cell {
        std::string text;         ///< empty: not told, shown as "-"
        Look look = Look::Plain;  ///< colours it
        bool isBlank = false;     ///< nothing to tell here: no "-" either
        char mark = '\0';         ///< in the text; told also where it is cut off
    };

    explicit Grid(std::vector<Column> columns) : m_Columns(std::move(columns)) {}

    /// One cell for each column. Texts are made printable here.
    void AddRow(std::vector<Cell> row);

    [[nodiscard]] bool IsEmpty() const { return m_Rows.empty(); }

    /// Columns that hold nothing are left out. Every line begins with `indentation` blanks.
    [[nodiscard]] std::string Text(const TerminalStyle& style, std::size_t indentation) const;

  private:
    void LeaveOut(std::size_t room, std::vector<std::size_t>& widths) const;
    [[nodiscard]] std::size_t WidestToShorten(const std::vector<std::size_t>& widths) const;
    [[nodiscard]] std::vector<std::size_t> TextWidths() const;
    [[nodiscard]] std::vector<std::size_t> WidthsFor(const std::vector<std::size_t>& texts,
                                                     std::size_t room) const;
    [[nodiscard]] std::string NotShown(const std::vector<std::size_t>& texts,
                                       const std::vector<std::size_t>& widths) const;

    std::vector<Column> m_Columns;
    std::vector<std::vector<Cell>> m_Rows;
};

/// The text in the colour of a look, where there are colours.
[[nodiscard]] std::string Colored(const std::string& text, Look look, const TerminalStyle& style);

/// A heading, bold where there are colours.
[[nodiscard]] std::string Heading(const std::string& text, const TerminalStyle& style);

/// The text in lines no longer than the terminal is wide, broken at blanks, or within a word that fits no
/// line; the first one begins in column `column`, the others in column `hang`.
[[nodiscard]] std::string Wrapped(std::string_view text, std::size_t column, std::size_t hang,
                                  const TerminalStyle& style);

}  // namespace views
