#include "Grid.h"

#include "basics/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace views::test {
namespace {

Grid Example() {
    Grid grid({{"NAME"},
               {"SIZE", Grid::Fit::Omit, true},
               {"A LONG NOTE", Grid::Fit::Shorten},
               {"MODEL", Grid::Fit::Omit}});
    grid.AddRow({{"PD0"}, {"9 GB"}, {"all is well here"}, {"M1"}});
    grid.AddRow({{"PD10", views::Look::Critical}, {"558 GB"}, {""}, {"", {}, true}});
    return grid;
}

std::size_t WidestLine(const std::string& text) {
    std::size_t widest = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        widest = std::max(widest, basics::WidthOf(line));
    }
    return widest;
}

TEST(GridTest, AlignsColumnsAndShowsWhatIsMissing) {
    EXPECT_EQ(Example().Text({}, 2),
              "  NAME    SIZE  A LONG NOTE       MODEL\n"
              "  PD0     9 GB  all is well here  M1\n"
              "  PD10  558 GB  -\n");
}

TEST(GridTest, LeavesOutTheLastColumnThatMayBeFirst) {
    EXPECT_EQ(Example().Text({36, false}, 2),
              "  NAME    SIZE  A LONG NOTE\n"
              "  PD0     9 GB  all is well here\n"
              "  PD10  558 GB  -\n"
              "  not shown for lack of width: MODEL\n");
    EXPECT_EQ(Example().Text({20, false}, 2),
              "  NAME  A LONG NOTE\n"
              "  PD0   all is well\xE2\x80\xA6\n"
              "  PD10  -\n"
              "  not shown for lack\n"
              "  of width: SIZE,\n"
              "  MODEL\n");
}

TEST(GridTest, NeverGetsWiderThanTheTerminal) {
    for (std::size_t columns = 1; columns < 50; ++columns) {
        EXPECT_LE(WidestLine(Example().Text({columns, false}, 2)), std::max<std::size_t>(columns, 2))
            << columns;
    }
}

TEST(GridTest, ShortensBeforeItLeavesOutWhereEitherMayBe) {
    Grid grid({{"NAME"}, {"NOTES", Grid::Fit::ShortenOrOmit}});
    grid.AddRow({{"PD0"}, {"failure predicted: 7"}});
    EXPECT_EQ(grid.Text({20, false}, 0), "NAME  NOTES\nPD0   failure predi\xE2\x80\xA6\n");
    EXPECT_EQ(grid.Text({13, false}, 0), "NAME\nPD0\nnot shown for\nlack of\nwidth: NOTES\n");
}

TEST(GridTest, ShortensALongTextBeforeItLeavesOutAColumnBehindIt) {
    Grid grid({{"NAME"}, {"NOTES", Grid::Fit::ShortenOrOmit}, {"MODEL", Grid::Fit::Omit}});
    grid.AddRow({{"PD0"}, {std::string(60, 'n')}, {"M1234"}});
    const std::string all = "NAME  NOTES" + std::string(37, ' ') + "MODEL\nPD0   " + std::string(39, 'n') +
                            "\xE2\x80\xA6  M1234\n";
    EXPECT_EQ(grid.Text({53, false}, 0), all);
    EXPECT_EQ(grid.Text({52, false}, 0), "NAME  NOTES\nPD0   " + std::string(45, 'n') +
                                             "\xE2\x80\xA6\nnot shown for lack of width: MODEL\n");
}

TEST(GridTest, LeavesOutAColumnThatHoldsNothing) {
    Grid grid({{"A"}, {"EMPTY"}, {"B"}});
    grid.AddRow({{"1"}, {""}, {"2"}});
    EXPECT_EQ(grid.Text({}, 0), "A  B\n1  2\n");
}

TEST(GridTest, TellsOfEveryColumnThatLacksRoomAndOfNoOther) {
    Grid grid({{"NAME"}, {"EMPTY", Grid::Fit::Omit}, {"SIZE", Grid::Fit::Omit}, {"STATE"}, {"LAST"}});
    grid.AddRow({{std::string(30, 'x')}, {""}, {"9 GB"}, {"ONLINE"}, {"?"}});
    EXPECT_EQ(grid.Text({40, false}, 0), "NAME" + std::string(28, ' ') + "STATE\n" + std::string(30, 'x') +
                                             "  ONLINE\nnot shown for lack of width: SIZE, LAST\n");
}

TEST(GridTest, TellsOfAMarkThatIsCutOff) {
    const auto shown = [](const char* text) {
        Grid grid({{"DRIVES"}});
        grid.AddRow({{text, {}, false, '!'}});
        const std::string lines = grid.Text({9, false}, 0);
        return lines.substr(lines.find('\n') + 1);
    };
    EXPECT_EQ(shown("PD1 PD2!"), "PD1 PD2!\n");
    EXPECT_EQ(shown("PD1 PD2 PD3"), "PD1 PD2 \xE2\x80\xA6\n");
    EXPECT_EQ(shown("PD1 PD2 PD3!"), "PD1 PD2\xE2\x80\xA6!\n");
    EXPECT_EQ(shown("PD1! PD2 PD3"), "PD1! PD2\xE2\x80\xA6\n");
    EXPECT_EQ(shown("PD1! PD2 PD3!"), "PD1! PD\xE2\x80\xA6!\n");
}

TEST(GridTest, ShortensWhatNobodyReadsHoweverMuchRoomThereIs) {
    Grid grid({{"NAME", Grid::Fit::Shorten}, {"SIZE"}});
    grid.AddRow({{std::string(200, 'x')}, {"1"}});
    grid.AddRow({{std::string(201, 'y')}, {"2"}});
    const std::string title = "NAME" + std::string(198, ' ') + "SIZE\n";
    const std::string shown =
        title + std::string(200, 'x') + "  1\n" + std::string(199, 'y') + "\xE2\x80\xA6  2\n";
    EXPECT_EQ(grid.Text({}, 0), shown);
    EXPECT_EQ(grid.Text({5000, false}, 0), shown);
}

TEST(GridTest, ColoursTextAndNotItsWidth) {
    EXPECT_EQ(Example().Text({0, true}, 0),
              "NAME    SIZE  A LONG NOTE       MODEL\n"
              "PD0     9 GB  all is well here  M1\n"
              "\x1b[1;31mPD10\x1b[0m  558 GB  -\n");
}

TEST(GridTest, MakesTextsPrintable) {
    Grid grid({{"A"}});
    grid.AddRow({{"\x1b[2J"}});
    EXPECT_EQ(grid.Text({}, 0), "A\n\xEF\xBF\xBD[2J\n");
}

}  // namespace
}  // namespace views::test
