#include "verbs/addressVerbs.h"

#include "verbOutput.h"

#include <QJsonArray>

#include <gtest/gtest.h>

// Address numbers and ranges are those of the table in the driver's header.

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

class SeriesVerb : public testing::Test
{
protected:
    std::string series(const char* area, const char* address, int count, int interval, bool json,
                       bool valid = true)
    {
        return printed([&](std::FILE* out) {
            EXPECT_EQ(valid,
                      printSeries(out, m_driver, text(area), text(address), count, interval, json));
        });
    }

    const DriverLibrary m_driver{QString::fromLatin1(KAKB_DRIVER_FILE)};
};

} // namespace

TEST_F(SeriesVerb, ListsAddressesAtTheInterval)
{
    EXPECT_EQ("MW 100 = 3050\nMW 104 = 3052\nMW 108 = 3054\n", series("MW", "100", 3, 2, false));
    EXPECT_EQ("QX 0.6 = 6\nQX 1.1 = 9\n", series("QX", "0.6", 2, 3, false));
}

TEST_F(SeriesVerb, SaysHowManyWereClipped)
{
    EXPECT_EQ("MW 8188 = 7094\nMW 8190 = 7095\nMW 8190 = 7095\nMW 8190 = 7095\n"
              "clipped: the last 2 lay past the end of MW and became 8190\n",
              series("MW", "8188", 4, 1, false));
}

TEST_F(SeriesVerb, AsAnObjectHasEntriesAndClipping)
{
    const QJsonObject object = objectOf(series("QX", "511.6", 3, 1, true));
    EXPECT_TRUE(object[text("valid")].toBool());
    EXPECT_EQ(1, object[text("clipped")].toInt());
    const QJsonArray entries = object[text("entries")].toArray();
    ASSERT_EQ(3, entries.size());
    EXPECT_EQ(text("511.7"), entries[1].toObject()[text("address")].toString());
    EXPECT_EQ(4095, entries[1].toObject()[text("number")].toInt());
}

TEST_F(SeriesVerb, ExplainsABadStart)
{
    EXPECT_EQ("MW 101: not valid: odd: a word starts at an even number\n",
              series("MW", "101", 3, 1, false, false));
    EXPECT_FALSE(objectOf(series("XW", "0", 3, 1, true, false))[text("valid")].toBool(true));
}
