#include "output/watchScreen.h"

#include "modelTerminal.h"

#include <gtest/gtest.h>

namespace {

/// Lines of a screen of 80 columns, on which the figures take two.
enum { FIGURES, MORE_FIGURES, HEADINGS, FIRST_ROW };

WatchRow row(const char* name, const char* value)
{
    WatchRow made;
    made.name = QString::fromUtf8(name);
    made.address = QString::fromLatin1("MW100");
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

Terminal shown(const std::vector<WatchRow>& table, int columns, int rows)
{
    Terminal terminal(columns, rows);
    terminal.write(WatchScreen().frame(table, connected(), columns, rows));
    return terminal;
}

std::string ageShown(qint64 ms)
{
    WatchRow aged = row("level", "17");
    aged.ageMs = ms;
    const QString line = QString::fromStdString(shown({aged}, 80, 5).line(FIRST_ROW));
    return line.mid(35, 6).trimmed().toStdString();
}

} // namespace

TEST(WatchScreen, ARowHasItsSixColumnsUnderTheirHeadings)
{
    const Terminal terminal = shown({row("level", "17")}, 80, 24);
    EXPECT_EQ("name      address           value     age   changes  state",
              terminal.line(HEADINGS));
    EXPECT_EQ("level     MW100                17   0.3 s         5  good",
              terminal.line(FIRST_ROW));
}

TEST(WatchScreen, TheLinksFiguresStandAbove)
{
    EXPECT_EQ("0.0 exchanges/s  retries 0  give-ups 0  refused 0  fences 0  reply p50 -  p99 -  "
              "wire 0 %  losses 0",
              shown({}, 120, 24).line(FIGURES));
}

TEST(WatchScreen, TheRatesAreThoseOfLate)
{
    LinkFigures figures = connected();
    figures.wholeRun.exchangesPerSecond = 99;
    figures.lately.exchangesPerSecond = 12;
    Terminal terminal(120, 24);
    terminal.write(WatchScreen().frame({}, figures, 120, 24));
    EXPECT_EQ("12.0 exchanges/s", terminal.line(FIGURES).substr(0, 16));
}

TEST(WatchScreen, FiguresTooLongForALineGoOnInTheNext)
{
    const Terminal terminal = shown({}, 80, 24);
    EXPECT_EQ("0.0 exchanges/s  retries 0  give-ups 0  refused 0  fences 0  reply p50 -  p99 -",
              terminal.line(FIGURES));
    EXPECT_EQ("wire 0 %  losses 0", terminal.line(MORE_FIGURES));
}

TEST(WatchScreen, ALostLinkStandsOut)
{
    Terminal terminal(80, 24);
    terminal.write(WatchScreen().frame({}, LinkFigures(), 80, 24));
    EXPECT_EQ("link lost", terminal.line(FIGURES).substr(0, 9));
    EXPECT_TRUE(terminal.isBold(FIGURES));
    EXPECT_FALSE(shown({}, 80, 24).isBold(FIGURES));
}

TEST(WatchScreen, ABadRowStandsOutAndSaysWhy)
{
    const Terminal terminal = shown({row("level", "17"), badRow("station 1 is silent")}, 80, 24);
    EXPECT_FALSE(terminal.isBold(FIRST_ROW));
    EXPECT_TRUE(terminal.isBold(FIRST_ROW + 1));
    EXPECT_EQ("level     MW100                17   0.3 s         5  bad: station 1 is silent",
              terminal.line(FIRST_ROW + 1));
}

TEST(WatchScreen, ABadRowWithoutAReasonIsJustBad)
{
    EXPECT_EQ("level     MW100                17   0.3 s         5  bad",
              shown({badRow("")}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, WhatWasOnTheScreenIsGone)
{
    EXPECT_FALSE(shown({row("level", "17")}, 80, 24).shows(Terminal::garbage()));
}

TEST(WatchScreen, ATableThatGotShorterLeavesNothingBehind)
{
    Terminal terminal = shown({row("level", "17"), row("flow", "18")}, 80, 24);
    terminal.write(WatchScreen().frame({row("flow", "18")}, connected(), 80, 24));
    EXPECT_EQ(0u, terminal.line(FIRST_ROW).find("flow"));
    EXPECT_EQ("", terminal.line(FIRST_ROW + 1));
}

TEST(WatchScreen, OnlyCellsThatChangeAreTouched)
{
    Terminal terminal = shown({row("level", "17"), row("flow", "18")}, 80, 24);
    terminal.takeTouched();
    terminal.write(
        WatchScreen().frame({row("level", "17"), row("flow", "19")}, connected(), 80, 24));
    EXPECT_EQ(1, terminal.takeTouched());
}

TEST(WatchScreen, ATableOfExactlyTheScreensHeightIsShownWhole)
{
    const std::vector<WatchRow> table = {row("a", "1"), row("b", "2"), row("c", "3")};
    EXPECT_EQ(0u, shown(table, 80, 6).line(5).find("c "));
}

TEST(WatchScreen, RowsWithoutALineAreCounted)
{
    const Terminal terminal = shown(std::vector<WatchRow>(2000, row("level", "17")), 80, 24);
    EXPECT_EQ(0u, terminal.line(22).find("level"));
    EXPECT_EQ("\xe2\x80\xa6 1,980 more", terminal.line(23));
}

TEST(WatchScreen, TheSmallestScreensAreKeptTo)
{
    const std::vector<WatchRow> table(9, row("level", "17"));
    for (int rows = 1; rows < 5; ++rows) {
        for (int columns = 1; columns < 81; ++columns)
            shown(table, columns, rows);
    }
    EXPECT_EQ("", WatchScreen().frame(table, connected(), 80, 0).toStdString());
}

TEST(WatchScreen, ALineLongerThanTheScreenIsWideIsCut)
{
    EXPECT_EQ("level     MW100               \xe2\x80\xa6",
              shown({row("level", "17")}, 32, 24).line(FIRST_ROW));
}

TEST(WatchScreen, ATextLongerThanItsColumnIsCut)
{
    const std::string longName(60, 'n');
    WatchRow long1 = row(longName.c_str(), "-1.17549435082229e-38");
    long1.trouble = QString::fromLatin1("this is far too long for what is left");
    long1.good = false;
    EXPECT_EQ(std::string(21, 'n') + "\xe2\x80\xa6  MW100    -1.1754943508\xe2\x80\xa6   0.3 s     "
                                     "    5  bad: this i\xe2\x80\xa6",
              shown({long1}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, AnAddressLongerThanItsColumnIsCut)
{
    WatchRow remote = row("level", "17");
    remote.address = QString::fromLatin1("247:MX4095.15!");
    EXPECT_EQ("level     247:MX4095.\xe2\x80\xa6              17",
              shown({remote}, 80, 24).line(FIRST_ROW).substr(0, 40));
}

TEST(WatchScreen, AWideScreenShowsLongNamesWhole)
{
    const std::string longName(60, 'n');
    EXPECT_EQ(longName + "  MW100",
              shown({row(longName.c_str(), "17")}, 160, 24).line(FIRST_ROW - 1).substr(0, 67));
}

TEST(WatchScreen, ColumnsStandStillWhileValuesChange)
{
    const std::string before = shown({row("level", "1")}, 80, 24).line(HEADINGS);
    EXPECT_EQ(before, shown({row("level", "-1.175494e-38")}, 80, 24).line(HEADINGS));
}

TEST(WatchScreen, ControlCharactersInTextsDoNotReachTheTerminal)
{
    WatchRow evil = row("le\x1b[2Jvel", "1\r\n7");
    evil.address = QString::fromLatin1("MW\t1");
    evil.good = false;
    evil.trouble = QString::fromLatin1("no\nanswer");
    EXPECT_EQ("le?[2Jvel  MW?1               1??7   0.3 s         5  bad: no?answer",
              shown({evil}, 80, 24).line(FIRST_ROW));
}

TEST(WatchScreen, AgesHaveTheUnitThatSuitsThem)
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
