#include "output/watchScreen.h"
#include "output/tableColumns.h"

#include "modelTerminal.h"

#include <gtest/gtest.h>

namespace {

/// Line numbers on a screen of 80 columns, where the figures take two lines.
enum { FIGURES, MORE_FIGURES, HEADINGS, FIRST_ROW };

WatchRow row(const char* name, const char* value)
{
    WatchRow made;
    made.name = QString::fromUtf8(name);
    made.address = QString::fromLatin1("MW100");
    made.label = made.name;
    made.value = QString::fromLatin1(value);
    made.ageMs = 312;
    made.changes = 5;
    made.good = true;
    return made;
}

WatchRow badRow(const char* trouble)
{
    WatchRow made = row("level", "17");
    made.good = false;
    made.trouble = QString::fromLatin1(trouble);
    return made;
}

LinkFigures connected()
{
    LinkFigures figures;
    figures.connected = true;
    figures.lately.wireShare = 0;
    return figures;
}

TableView viewOf(const std::vector<WatchRow>& table, TableView::Keys keys = TableView::WITHOUT_KEYS)
{
    TableView view(keys, [](int, const QString&) { return QString(); });
    view.update(table);
    return view;
}

QByteArray frame(const std::vector<WatchRow>& table, const LinkFigures& figures, int columns,
                 int rows)
{
    return WatchScreen::frame(viewOf(table), figures, columns, rows);
}

Terminal shown(const std::vector<WatchRow>& table, int columns, int rows)
{
    Terminal terminal(columns, rows);
    terminal.write(frame(table, connected(), columns, rows));
    return terminal;
}

/// The first row of a table of one row; the figures take one or two lines.
std::string narrowRow(const WatchRow& only, int columns)
{
    const Terminal terminal = shown({only}, columns, 24);
    for (int line = 0; line < 24; ++line) {
        if (terminal.isUnderlined(line)) return terminal.line(line + 1);
    }
    return "no headings";
}

std::string ageShown(qint64 ms)
{
    WatchRow aged = row("level", "17");
    aged.ageMs = ms;
    const QString line = QString::fromStdString(shown({aged}, 80, 5).line(FIRST_ROW));
    return line.mid(35, 6).trimmed().toStdString();
}

} // namespace

TEST(WatchScreen, RowHasSixColumnsUnderTheirHeadings)
{
    const Terminal terminal = shown({row("level", "17")}, 80, 24);
    EXPECT_EQ("name      address           value     age   changes  state",
              terminal.line(HEADINGS));
    EXPECT_EQ("level     MW100                17   0.3 s         5  good",
              terminal.line(FIRST_ROW));
}

TEST(WatchScreen, FiguresAreOnTop)
{
    EXPECT_EQ("0.0 exchanges/s  retries 0  give-ups 0  refused 0  fences 0  reply p50 -  p99 -  "
              "wire 0 %  losses 0",
              shown({}, 120, 24).line(FIGURES));
}

TEST(WatchScreen, RatesAreRecent)
{
    LinkFigures figures = connected();
    figures.wholeRun.exchangesPerSecond = 99;
    figures.lately.exchangesPerSecond = 12;
    Terminal terminal(120, 24);
    terminal.write(frame({}, figures, 120, 24));
    EXPECT_EQ("12.0 exchanges/s", terminal.line(FIGURES).substr(0, 16));
}

TEST(WatchScreen, LongFiguresContinueOnTheNextLine)
{
    const Terminal terminal = shown({}, 80, 24);
    EXPECT_EQ("0.0 exchanges/s  retries 0  give-ups 0  refused 0  fences 0  reply p50 -  p99 -",
              terminal.line(FIGURES));
    EXPECT_EQ("wire 0 %  losses 0", terminal.line(MORE_FIGURES));
}

TEST(WatchScreen, LostLinkIsBold)
{
    Terminal terminal(80, 24);
    terminal.write(frame({}, LinkFigures(), 80, 24));
    EXPECT_EQ("link lost", terminal.line(FIGURES).substr(0, 9));
    EXPECT_TRUE(terminal.isBold(FIGURES));
    EXPECT_FALSE(shown({}, 80, 24).isBold(FIGURES));
}

TEST(WatchScreen, BadRowIsBoldAndHasItsReason)
{
    const Terminal terminal = shown({row("level", "17"), badRow("station 1 is silent")}, 80, 24);
    EXPECT_FALSE(terminal.isBold(FIRST_ROW));
    EXPECT_TRUE(terminal.isBold(FIRST_ROW + 1));
    EXPECT_EQ("level     MW100                17   0.3 s         5  bad: station 1 is silent",
              terminal.line(FIRST_ROW + 1));
}

TEST(WatchScreen, BadRowWithoutReasonSaysBad)
{
    EXPECT_EQ("level     MW100                17   0.3 s         5  bad",
              shown({badRow("")}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, FrameOverwritesTheScreen)
{
    EXPECT_FALSE(shown({row("level", "17")}, 80, 24).shows(Terminal::garbage()));
}

TEST(WatchScreen, ShorterTableErasesOldRows)
{
    Terminal terminal = shown({row("level", "17"), row("flow", "18")}, 80, 24);
    terminal.write(frame({row("flow", "18")}, connected(), 80, 24));
    EXPECT_EQ(0u, terminal.line(FIRST_ROW).find("flow"));
    EXPECT_EQ("", terminal.line(FIRST_ROW + 1));
}

TEST(WatchScreen, OnlyChangedCellsAreWritten)
{
    Terminal terminal = shown({row("level", "17"), row("flow", "18")}, 80, 24);
    terminal.takeTouched();
    terminal.write(frame({row("level", "17"), row("flow", "19")}, connected(), 80, 24));
    EXPECT_EQ(1, terminal.takeTouched());
}

TEST(WatchScreen, TableOfTheScreensHeightIsShownWhole)
{
    const std::vector<WatchRow> table = {row("a", "1"), row("b", "2"), row("c", "3")};
    EXPECT_EQ(0u, shown(table, 80, 6).line(5).find("c "));
}

TEST(WatchScreen, HiddenRowsAreCounted)
{
    const Terminal terminal = shown(std::vector<WatchRow>(2000, row("level", "17")), 80, 24);
    EXPECT_EQ(0u, terminal.line(22).find("level"));
    EXPECT_EQ("\xe2\x80\xa6 1,980 more", terminal.line(23));
}

TEST(WatchScreen, FrameFitsTheSmallestScreens)
{
    const std::vector<WatchRow> table(9, row("level", "17"));
    for (int rows = 1; rows < 5; ++rows) {
        for (int columns = 1; columns < 81; ++columns)
            shown(table, columns, rows);
    }
    EXPECT_EQ("", frame(table, connected(), 80, 0).toStdString());
}

TEST(WatchScreen, NarrowTerminalDropsColumnsFromTheRightButNeverTheValue)
{
    const struct
    {
        int columns;
        const char* row;
    } rows[] = {{66, "level     MW100                17   0.3 s         5  good"},
                {65, "level     MW100                17   0.3 s         5"},
                {52, "level     MW100                17   0.3 s         5"},
                {51, "level     MW100                17   0.3 s"},
                {42, "level     MW100                17   0.3 s"},
                {41, "level     MW100                17"},
                {34, "level     MW100                17"},
                {33, "level                 17"},
                {25, "level                 17"},
                {24, "level                17"},
                {19, "l\xe2\x80\xa6              17"},
                {15, "            17"},
                {3, "17"},
                {2, "\xe2\x80\xa6"}};
    for (const auto& narrow : rows)
        EXPECT_EQ(narrow.row, narrowRow(row("level", "17"), narrow.columns))
            << narrow.columns << " columns";
}

TEST(TableColumnsTest, BadValueIsMarkedWhereTheStateIsDropped)
{
    WatchRow row;
    row.name = QLatin1String("level");
    row.address = QLatin1String("MW120");
    row.value = QLatin1String("33.5");
    row.good = false;
    for (int width = 15; width < 120; ++width) {
        const TableColumns columns({row}, width);
        EXPECT_EQ(columns.line(row).contains(QLatin1String("!33.5")), !columns.hasState()) << width;
        WatchRow good = row;
        good.good = true;
        EXPECT_FALSE(columns.line(good).contains(QLatin1Char('!'))) << width;
    }
    row.value = QLatin1String("-1.2345679e-38"); // as long as the column
    EXPECT_TRUE(TableColumns({row}, 40).line(row).contains(QLatin1String(" !-1.2345679e-38")));
}

TEST(WatchScreen, LongTextIsCut)
{
    const std::string longName(60, 'n');
    WatchRow long1 = row(longName.c_str(), "-1.17549435082229e-38");
    long1.trouble = QString::fromLatin1("this is far too long for what is left");
    long1.good = false;
    EXPECT_EQ(std::string(21, 'n') + "\xe2\x80\xa6  MW100    -1.1754943508\xe2\x80\xa6   0.3 s     "
                                     "    5  bad: this i\xe2\x80\xa6",
              shown({long1}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, LongAddressIsCut)
{
    WatchRow remote = row("level", "17");
    remote.address = QString::fromLatin1("247:MX4095.15!");
    EXPECT_EQ("level     247:MX4095.\xe2\x80\xa6              17",
              shown({remote}, 80, 24).line(FIRST_ROW).substr(0, 40));
}

TEST(WatchScreen, LongestValueOfATypeIsNeverCut)
{
    WatchRow bits = row("level", "0b11111111111111110000000000000000");
    bits.valueWidth = 34;
    EXPECT_EQ("level     MW100    0b11111111111111110000000000000000   0.3 s         5",
              shown({bits}, 80, 24).line(FIRST_ROW));
    EXPECT_EQ("l\xe2\x80\xa6  0b11111111111111110000000000000000", narrowRow(bits, 39));
}

TEST(WatchScreen, WideScreenShowsLongNamesWhole)
{
    const std::string longName(60, 'n');
    EXPECT_EQ(longName + "  MW100",
              shown({row(longName.c_str(), "17")}, 160, 24).line(FIRST_ROW - 1).substr(0, 67));
}

TEST(WatchScreen, ColumnsDoNotMoveWithValues)
{
    const std::string before = shown({row("level", "1")}, 80, 24).line(HEADINGS);
    EXPECT_EQ(before, shown({row("level", "-1.175494e-38")}, 80, 24).line(HEADINGS));
}

TEST(WatchScreen, ControlCharactersDoNotReachTheTerminal)
{
    WatchRow evil = row("le\x1b[2Jvel", "1\r\n7");
    evil.address = QString::fromLatin1("MW\t1");
    evil.good = false;
    evil.trouble = QString::fromLatin1("no\nanswer");
    EXPECT_EQ("le?[2Jvel  MW?1               1??7   0.3 s         5  bad: no?answer",
              shown({evil}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, AgesHaveAFittingUnit)
{
    const struct
    {
        qint64 ms;
        const char* text;
    } rows[] = {{-1, "never"},     {0, "0.0 s"},       {312, "0.3 s"},
                {59999, "59.9 s"}, {60000, "1 min"},   {3599999, "59 min"},
                {3600000, "1 h"},  {86399999, "23 h"}, {86400000, "1 d"}};
    for (const auto& age : rows)
        EXPECT_EQ(age.text, ageShown(age.ms)) << age.ms;
}

TEST(WatchScreen, LeavingUndoesEntering)
{
    EXPECT_EQ("\x1b[?1049h\x1b[?25l\x1b[?7l", WatchScreen::enter().toStdString());
    EXPECT_EQ("\x1b[0m\x1b[?7h\x1b[?25h\x1b[?1049l", WatchScreen::leave().toStdString());
}

namespace {

/// A view of the rows n0, n1, ... with keys, on a screen of 80 columns.
TableView keyView(int count, int rows)
{
    std::vector<WatchRow> table;
    for (int i = 0; i < count; ++i)
        table.push_back(row(("n" + std::to_string(i)).c_str(), "1"));
    TableView view = viewOf(table, TableView::WITH_KEYS);
    view.setPage(WatchScreen::page(view, connected(), 80, rows));
    return view;
}

void press(TableView& view, Key::Kind kind)
{
    Key key;
    key.kind = kind;
    view.press(key);
}

void type(TableView& view, const char* text)
{
    for (const char* at = text; *at != '\0'; ++at)
        view.press({Key::TEXT, QString(QLatin1Char(*at))});
}

Terminal drawn(const TableView& view, int columns, int rows)
{
    Terminal terminal(columns, rows);
    terminal.write(WatchScreen::frame(view, connected(), columns, rows));
    return terminal;
}

} // namespace

TEST(WatchScreen, MarkedRowIsInverse)
{
    TableView view = keyView(3, 24);
    EXPECT_TRUE(drawn(view, 80, 24).isInverse(FIRST_ROW));
    press(view, Key::DOWN);
    const Terminal terminal = drawn(view, 80, 24);
    EXPECT_FALSE(terminal.isInverse(FIRST_ROW));
    EXPECT_TRUE(terminal.isInverse(FIRST_ROW + 1));
}

TEST(WatchScreen, WithoutKeysThereIsNoMarkAndNoBottomLine)
{
    const Terminal terminal = shown({row("level", "17")}, 80, 24);
    EXPECT_FALSE(terminal.isInverse(FIRST_ROW));
    EXPECT_EQ("", terminal.line(23));
}

TEST(WatchScreen, BottomLineHelpsAndSaysWhichRowsAreShown)
{
    EXPECT_EQ("? keys  q end  / filter  s sort  w write", drawn(keyView(3, 24), 80, 24).line(23));
    EXPECT_EQ("1-4 of 9  ? keys  q end  / filter  s sort  w write",
              drawn(keyView(9, 8), 80, 8).line(7));
}

TEST(WatchScreen, ScrolledTableBeginsAtTheTop)
{
    TableView view = keyView(9, 8);
    press(view, Key::END);
    const Terminal terminal = drawn(view, 80, 8);
    EXPECT_EQ(0u, terminal.line(FIRST_ROW).find("n5"));
    EXPECT_EQ(0u, terminal.line(FIRST_ROW + 3).find("n8"));
    EXPECT_EQ("6-9 of 9", terminal.line(7).substr(0, 8));
}

TEST(WatchScreen, TypedValueStaysVisibleOnANarrowTerminal)
{
    TableView view = keyView(1, 24);
    type(view, "w123456");
    EXPECT_EQ("value for n0: 123456_", drawn(view, 80, 24).line(23));
    EXPECT_EQ("\xe2\x80\xa6 123456_", drawn(view, 10, 24).line(23));
    press(view, Key::ENTER);
    EXPECT_EQ("\xe2\x80\xa6to n0? y/n", drawn(view, 12, 24).line(23).substr(0, 13));
}

TEST(WatchScreen, ReasonOfTheMarkedRowIsBelowATableWithoutState)
{
    TableView view =
        viewOf({row("level", "17"), badRow("station 1 is silent")}, TableView::WITH_KEYS);
    view.setPage(10);
    EXPECT_EQ("? keys", drawn(view, 40, 24).line(23).substr(0, 6));
    press(view, Key::DOWN);
    EXPECT_EQ("bad: station 1 is silent", drawn(view, 40, 24).line(23));
    EXPECT_EQ("? keys", drawn(view, 80, 24).line(23).substr(0, 6));
}

TEST(WatchScreen, KeysAreShownInPlaceOfTheTable)
{
    TableView view = keyView(1, 24);
    type(view, "?");
    const Terminal terminal = drawn(view, 80, 24);
    EXPECT_EQ("q               ends the watch", terminal.line(HEADINGS));
    EXPECT_EQ("any key goes back to the table", terminal.line(23));
    EXPECT_FALSE(terminal.shows(Terminal::garbage()));
}

TEST(WatchScreen, FrameWithKeysFitsTheSmallestScreens)
{
    TableView view = keyView(9, 24);
    for (const char* keys : {"", "?", "x/n", "\x1bw1"}) {
        type(view, keys);
        for (int rows = 1; rows < 6; ++rows) {
            for (int columns = 1; columns < 81; ++columns) {
                view.setPage(WatchScreen::page(view, connected(), columns, rows));
                EXPECT_FALSE(drawn(view, columns, rows).shows(Terminal::garbage()));
            }
        }
    }
}

TEST(WatchScreen, LastTableIsThatOfTheScreenInPlainLines)
{
    TableView view = keyView(9, 8);
    press(view, Key::END);
    const QStringList lines = WatchScreen::lastTable(view, 80, 4);
    ASSERT_EQ(6, lines.size());
    EXPECT_EQ("name      address           value     age   changes  state",
              lines.at(0).trimmed().toStdString());
    EXPECT_TRUE(lines.at(1).startsWith(QLatin1String("n5 ")));
    EXPECT_TRUE(lines.at(4).startsWith(QLatin1String("n8 ")));
    EXPECT_EQ("\xe2\x80\xa6 5 more", lines.at(5).toStdString());
}
