#include "multiCopy.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

struct Series
{
    int result;
    std::vector<int> addrs;
    Texts texts;

    bool operator==(const Series& other) const
    {
        return result == other.result && addrs == other.addrs && texts == other.texts;
    }
};

std::ostream& operator<<(std::ostream& out, const Series& series)
{
    return out << "result " << series.result << ", " << testing::PrintToString(series.addrs) << ", "
               << testing::PrintToString(series.texts);
}

Series seriesOf(const char* area, int start, int count, int interval)
{
    QVector<QString> texts;
    QVector<int> addrs;
    const int result = intf_multiCopy(text(area), start, count, interval, texts, addrs);
    return {result, numbersOf(addrs), textsOf(texts)};
}

/// A series in an area whose highest address is 4000, with the text "top".
Series formatted(const char* format, const char* area, int start, int count, int interval = 1)
{
    QVector<QString> texts;
    QVector<int> addrs;
    const int result =
        multiCp(text(area), text(format), start, count, interval, texts, addrs, 4000, text("top"));
    return {result, numbersOf(addrs), textsOf(texts)};
}

struct SeriesRow
{
    const char* area;
    int start;
    int count;
    int interval;
    Series series;
};

} // namespace

class MultiCopy : public DriverTest
{
};

TEST_F(MultiCopy, ResultCodesAreTheInterfacesNumbers)
{
    EXPECT_EQ(0, int(SERIES_UNKNOWN_AREA));
    EXPECT_EQ(1, int(SERIES_COMPLETE));
    EXPECT_EQ(2, int(SERIES_CLIPPED));
}

TEST_F(MultiCopy, ASeriesCountsOnInTheAreasOwnTexts)
{
    const int quarter = 1 << 30;
    const SeriesRow rows[] = {
        // Bits are byte and bit, words byte offsets; markers are shifted back.
        {"IX", 0, 3, 2, {1, {0, 2, 4}, {"0.0", "0.2", "0.4"}}},
        {"QX", 7, 2, 1, {1, {7, 8}, {"0.7", "1.0"}}},
        {"MX", 3000, 2, 99, {1, {3000, 3099}, {"0.0", "12.3"}}},
        {"QW", 0, 3, 50, {1, {0, 50, 100}, {"0", "100", "200"}}},
        {"MW", 3000, 2, 1, {1, {3000, 3001}, {"0", "2"}}},
        {"MW", 7095, 1, 1, {1, {7095}, {"8190"}}},
        // An entry past the area becomes its last address, and every entry behind it.
        {"IW", 254, 3, 1, {2, {254, 255, 255}, {"508", "510", "510"}}},
        {"MW", 7096, 1, 1, {2, {7095}, {"8190"}}},
        {"MX", 65535, 2, 1, {2, {65535, 65535}, {"7816.7", "7816.7"}}},
        {"IX", 4095, 2, 1, {2, {4095, 4095}, {"511.7", "511.7"}}},
        {"QW", 250, 4, 10, {2, {250, 255, 255, 255}, {"500", "510", "510", "510"}}},
        // An interval of zero repeats the address.
        {"IW", 9, 3, 0, {1, {9, 9, 9}, {"18", "18", "18"}}},
        // A falling series comes back into range.
        {"IW", 257, 4, -1, {2, {255, 255, 255, 254}, {"510", "510", "510", "508"}}},
        {"IX", 4096, 2, -2, {2, {4095, 4094}, {"511.7", "511.6"}}},
        // A series below the area is not held back; 4294967294 is -2 as an unsigned number.
        {"IW", 0, 2, -1, {1, {0, -1}, {"0", "4294967294"}}},
        {"MW", 3000, 2, -1, {1, {3000, 2999}, {"0", "4294967294"}}},
        {"IX", 0, 2, -1, {1, {0, -1}, {"0.0", "0.-1"}}},
        // Addresses wrap around at 32 bits.
        {"IW", 0, 3, quarter, {2, {0, 255, INT_MIN}, {"0", "510", "0"}}},
        {"IW", INT_MAX, 2, 1, {2, {255, INT_MIN}, {"510", "0"}}},
        {"IW", INT_MIN, 2, -1, {2, {INT_MIN, 255}, {"0", "510"}}},
        // A count below one generates nothing.
        {"MW", 3000, 1, 1, {1, {3000}, {"0"}}},
        {"MW", 3000, 0, 1, {1, {}, {}}},
        {"MW", 3000, -1, 1, {1, {}, {}}},
        {"MW", 3000, INT_MIN, 1, {1, {}, {}}},
    };
    for (const SeriesRow& row : rows)
        EXPECT_EQ(row.series, seriesOf(row.area, row.start, row.count, row.interval))
            << row.area << " from " << row.start << ", count " << row.count << ", interval "
            << row.interval;
}

TEST_F(MultiCopy, TheSeriesIsAppended)
{
    QVector<QString> texts{text("before")};
    QVector<int> addrs{-5};
    EXPECT_EQ(1, intf_multiCopy(text("IX"), 0, 1, 1, texts, addrs));
    EXPECT_EQ((std::vector<int>{-5, 0}), numbersOf(addrs));
    EXPECT_EQ((Texts{"before", "0.0"}), textsOf(texts));
}

TEST_F(MultiCopy, AnUnknownAreaLeavesBothVectorsAlone)
{
    for (const char* name : {"ZZ", "ix", "", "MW_bit"}) {
        SCOPED_TRACE(name);
        QVector<QString> texts{text("before")};
        QVector<int> addrs{-5};
        EXPECT_EQ(0, intf_multiCopy(text(name), 0, 3, 1, texts, addrs));
        EXPECT_EQ(std::vector<int>{-5}, numbersOf(addrs));
        EXPECT_EQ(Texts{"before"}, textsOf(texts));
    }
}

TEST_F(MultiCopy, AFormatsLastLetterIsTheRadixOfTheByteOffset)
{
    // Neither hexadecimal nor octal offsets are shifted.
    EXPECT_EQ((Series{1, {3077, 3078}, {"180a", "180c"}}), formatted("HHHH", "MW", 3077, 2));
    EXPECT_EQ((Series{1, {-1}, {"fffffffe"}}), formatted("HHHH", "IW", -1, 1));
    EXPECT_EQ((Series{1, {3000, 3001}, {"13560", "13562"}}), formatted("OOOO", "MW", 3000, 2));
    EXPECT_EQ((Series{1, {5}, {"10"}}), formatted("D", "IW", 5, 1));
}

TEST_F(MultiCopy, AnUnknownLetterOrNoneLeavesTheTextOfTheEntryBefore)
{
    EXPECT_EQ((Series{1, {5, 6}, {"", ""}}), formatted("XXXX", "IW", 5, 2));
    EXPECT_EQ((Series{2, {4000, 4000, 3999}, {"top", "top", "top"}}),
              formatted("XXXX", "IW", 4001, 3, -1));
    EXPECT_EQ((Series{1, {5, 6}, {"", ""}}), formatted("", "IW", 5, 2));
}

TEST_F(MultiCopy, ABitFormatOnAWordAreaStopsTheSeriesAndKeepsTheEntriesBefore)
{
    EXPECT_EQ((Series{2, {}, {}}), formatted("DDDDO", "MW", 3000, 3));
    EXPECT_EQ((Series{2, {4000, 4000}, {"top", "top"}}), formatted("DDDDO", "MW", 4002, 4, -1));
}
