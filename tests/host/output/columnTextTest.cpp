#include "output/columnText.h"

#include <gtest/gtest.h>

namespace {

QString utf8(const char* text)
{
    return QString::fromUtf8(text);
}

} // namespace

TEST(ColumnText, CodePointBeyond16BitsIsOneColumn)
{
    EXPECT_EQ(2, columnsOf(utf8("\xf0\x9f\x94\xa5!")));
}

TEST(ColumnText, FittingTextIsNotCut)
{
    EXPECT_EQ("level", cutText(utf8("level"), 5).toStdString());
}

TEST(ColumnText, CutTextEndsInAnEllipsis)
{
    EXPECT_EQ("lev\xe2\x80\xa6", cutText(utf8("level"), 4).toStdString());
    EXPECT_EQ("\xf0\x9f\x94\xa5\xe2\x80\xa6",
              cutText(utf8("\xf0\x9f\x94\xa5level"), 2).toStdString());
    EXPECT_EQ("\xe2\x80\xa6", cutText(utf8("level"), 1).toStdString());
}

TEST(ColumnText, WidthOfZeroLeavesNothing)
{
    EXPECT_EQ("", cutText(utf8("level"), 0).toStdString());
    EXPECT_EQ("", cutText(utf8("level"), -3).toStdString());
}

TEST(ColumnText, ColumnHasExactlyItsWidth)
{
    EXPECT_EQ("17   ", columnText(utf8("17"), 5, LEFT_ALIGNED).toStdString());
    EXPECT_EQ("   17", columnText(utf8("17"), 5, RIGHT_ALIGNED).toStdString());
    EXPECT_EQ("1234\xe2\x80\xa6", columnText(utf8("123456"), 5, RIGHT_ALIGNED).toStdString());
}
