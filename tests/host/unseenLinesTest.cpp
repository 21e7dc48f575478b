#include "exchange/unseenLines.h"

#include <gtest/gtest.h>

TEST(UnseenLines, AtFirstTheyAreReckonedWithAsSlow)
{
    // 263 bytes of 11 bits at 1200 baud are 2410833.3 microseconds.
    EXPECT_EQ(2410834, UnseenLines(LineTiming::network()).frame(1, 263));
}

TEST(UnseenLines, ASerialLineIsAllThatThereIs)
{
    EXPECT_EQ(0, UnseenLines(LineTiming(LineSettings())).frame(1, 263));
}

TEST(UnseenLines, AnAnswerTellsHowSlowItsStationsLineIsAtMost)
{
    UnseenLines lines(LineTiming::network());
    lines.note(1, 15, 30000);
    EXPECT_EQ(2 * 30000, lines.frame(1, 30));
    EXPECT_EQ(2410834, lines.frame(2, 263));
}

TEST(UnseenLines, TheFastestAnswerTellsMost)
{
    UnseenLines lines(LineTiming::network());
    lines.note(1, 15, 30000);
    lines.note(1, 263, 263000);
    lines.note(1, 15, 16000);
    EXPECT_EQ(15000, lines.frame(1, 15));
}

TEST(UnseenLines, OneThatBeginsLateDoesNotMakeTheLineSlower)
{
    UnseenLines lines(LineTiming::network());
    lines.note(1, 15, 500000);
    // 15 bytes of 11 bits at 1200 baud.
    EXPECT_EQ(137500, lines.frame(1, 15));
}
