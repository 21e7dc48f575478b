#include "output/timeText.h"

#include "timeZone.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

// Dates by `date -u -d @1700000000`: 2023-11-14T22:13:20Z.

namespace {

const qint64 START = 1700000000000000;

std::string textOf(TimeText::Style style, qint64 time)
{
    return TimeText(style, START).text(time).toStdString();
}

std::string objectOf(TimeText::Style style, qint64 time)
{
    QJsonObject object;
    TimeText(style, START).insertInto(object, time);
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace

TEST(TimeText, RelativeTimeIsInSecondsWithSixDigits)
{
    EXPECT_EQ("12.345678", textOf(TimeText::RELATIVE, 12345678));
    EXPECT_EQ("0.000070", textOf(TimeText::RELATIVE, 70));
    EXPECT_EQ("86400.000001", textOf(TimeText::RELATIVE, 86400000001));
}

TEST(TimeText, IsoTimeIsInUtcWithMillisecondsInEveryZone)
{
    const TimeZone zone("ZONE-5:30");
    EXPECT_EQ("2023-11-14T22:13:20.000Z", textOf(TimeText::ISO, 0));
    EXPECT_EQ("2023-11-15T00:00:00.345Z", textOf(TimeText::ISO, 6400345999));
}

TEST(TimeText, LocalTimeHasTheOffset)
{
    {
        const TimeZone zone("ZONE-5:30"); // POSIX counts the hours to the west
        EXPECT_EQ("2023-11-15T03:43:20.007+05:30", textOf(TimeText::LOCAL, 7000));
    }
    {
        const TimeZone zone("ZONE3:30");
        EXPECT_EQ("2023-11-14T18:43:20.007-03:30", textOf(TimeText::LOCAL, 7000));
    }
    const TimeZone zone("ZONE0");
    EXPECT_EQ("2023-11-14T22:13:20.007+00:00", textOf(TimeText::LOCAL, 7000));
}

TEST(TimeText, ColumnIsAsWideAsTheTimesOfADay)
{
    EXPECT_EQ("    1.250000",
              TimeText(TimeText::RELATIVE, START).columnText(1250000).toStdString());
    EXPECT_EQ("2023-11-14T22:13:21.250Z",
              TimeText(TimeText::ISO, START).columnText(1250000).toStdString());
}

TEST(TimeText, ObjectHasANumberOfSecondsOrADate)
{
    EXPECT_EQ("{\"timeS\":12.5}", objectOf(TimeText::RELATIVE, 12500000));
    EXPECT_EQ("{\"time\":\"2023-11-14T22:13:32.500Z\"}", objectOf(TimeText::ISO, 12500000));
    EXPECT_EQ("{\"timeS\":null}", objectOf(TimeText::RELATIVE, -1));
    EXPECT_EQ("{\"time\":null}", objectOf(TimeText::LOCAL, -1));
}
