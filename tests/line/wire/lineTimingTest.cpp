#include "wire/lineTiming.h"

#include <gtest/gtest.h>

namespace {

LineSettings settings(int baud)
{
    LineSettings made;
    made.baud = baud;
    return made;
}

} // namespace

TEST(LineTiming, DriverParameterGivesTheSettings)
{
    const QStringList texts = QString::fromLatin1("9600,7,EVEN,2").split(QLatin1Char(','));
    const LineSettings read = LineSettings::fromTexts(texts);
    EXPECT_EQ(9600, read.baud);
    EXPECT_EQ(7, read.dataBits);
    EXPECT_EQ(LineSettings::EVEN_PARITY, read.parity);
    EXPECT_EQ(2, read.stopBits);
}

TEST(LineTiming, MalformedTextKeepsTheDefault)
{
    const QStringList texts = QString::fromLatin1("fast,,MAYBE,-1").split(QLatin1Char(','));
    const LineSettings read = LineSettings::fromTexts(texts);
    EXPECT_EQ(38400, read.baud);
    EXPECT_EQ(8, read.dataBits);
    EXPECT_EQ(LineSettings::NO_PARITY, read.parity);
    EXPECT_EQ(1, read.stopBits);
}

TEST(LineTiming, ParityNameMayBeUpperOrLowerCase)
{
    const struct
    {
        const char* text;
        LineSettings::Parity parity;
    } rows[] = {{"NONE", LineSettings::NO_PARITY},
                {"EVEN", LineSettings::EVEN_PARITY},
                {"ODD", LineSettings::ODD_PARITY},
                {"odd", LineSettings::ODD_PARITY}};
    for (const auto& row : rows) {
        for (LineSettings::Parity before : {LineSettings::NO_PARITY, LineSettings::EVEN_PARITY}) {
            LineSettings::Parity parity = before;
            EXPECT_TRUE(LineSettings::takeParity(QString::fromLatin1(row.text), parity));
            EXPECT_EQ(row.parity, parity) << row.text;
        }
    }
}

TEST(LineTiming, UnknownNameKeepsTheParity)
{
    for (const char* text : {"MARK", "", "EVENODD"}) {
        LineSettings::Parity parity = LineSettings::ODD_PARITY;
        EXPECT_FALSE(LineSettings::takeParity(QString::fromLatin1(text), parity)) << text;
        EXPECT_EQ(LineSettings::ODD_PARITY, parity) << text;
    }
}

TEST(LineTiming, CharacterHasStartDataAndStopBits)
{
    // 8 bytes of 10 bits at 9600 baud are 8333.3 microseconds; of 9 bits, 7500.
    EXPECT_EQ(8334, LineTiming(settings(9600)).frame(8));
    LineSettings shorter = settings(9600);
    shorter.dataBits = 7;
    EXPECT_EQ(7500, LineTiming(shorter).frame(8));
}

TEST(LineTiming, ParityAddsOneBitToEachCharacter)
{
    // 8 bytes of 11 bits at 9600 baud are 9166.7 microseconds.
    for (LineSettings::Parity parity : {LineSettings::EVEN_PARITY, LineSettings::ODD_PARITY}) {
        LineSettings withParity = settings(9600);
        withParity.parity = parity;
        EXPECT_EQ(9167, LineTiming(withParity).frame(8)) << parity;
    }
}

TEST(LineTiming, NetworkLinkTakesNoTime)
{
    EXPECT_EQ(0, LineTiming::network().frame(256));
    EXPECT_EQ(0, LineTiming::network().silentInterval());
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
