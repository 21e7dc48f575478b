#include "exchange/lineTiming.h"

#include <gtest/gtest.h>

namespace {

LineSettings settings(int baud)
{
    LineSettings made;
    made.baud = baud;
    return made;
}

} // namespace

TEST(LineTiming, ADriversParameterGivesTheSettings)
{
    const QStringList texts = QString::fromLatin1("9600,7,EVEN,2").split(QLatin1Char(','));
    const LineSettings read = LineSettings::fromTexts(texts);
    EXPECT_EQ(9600, read.baud);
    EXPECT_EQ(7, read.dataBits);
    EXPECT_TRUE(read.parity);
    EXPECT_EQ(2, read.stopBits);
}

TEST(LineTiming, WhatIsNoNumberLeavesTheDefault)
{
    const LineSettings read = LineSettings::fromTexts(QStringList(QString::fromLatin1("fast")));
    EXPECT_EQ(38400, read.baud);
    EXPECT_EQ(8, read.dataBits);
    EXPECT_FALSE(read.parity);
    EXPECT_EQ(1, read.stopBits);
}

TEST(LineTiming, ACharacterIsStartDataParityAndStopBits)
{
    // 8 bytes of 10 bits at 9600 baud are 8333.3 microseconds; with parity 11 bits, 9166.7.
    EXPECT_EQ(8334, LineTiming(settings(9600)).frame(8));
    LineSettings withParity = settings(9600);
    withParity.parity = true;
    EXPECT_EQ(9167, LineTiming(withParity).frame(8));
}

TEST(LineTiming, SilenceIsThreeAndAHalfCharactersUpTo19200Baud)
{
    EXPECT_EQ(3646, LineTiming(settings(9600)).silentInterval());
    EXPECT_EQ(1823, LineTiming(settings(19200)).silentInterval());
}

TEST(LineTiming, SilenceIsFixedAbove19200Baud)
{
    EXPECT_EQ(1750, LineTiming(settings(38400)).silentInterval());
    EXPECT_EQ(1750, LineTiming(settings(115200)).silentInterval());
}
