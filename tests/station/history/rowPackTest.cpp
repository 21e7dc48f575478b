// Rows as bytes.
#include "history/rowPack.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

HistoryRow rowOf(qint64 sequence, qint64 time, double value, Quality quality = GOOD)
{
    HistoryRow row;
    row.sequence = sequence;
    row.time = time;
    row.value = value;
    row.hasValue = true;
    row.quality = quality;
    return row;
}

} // namespace

TEST(RowPack, HoldsEveryRowExactly)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double values[] = {0,
                             -0.0,
                             1,
                             -1,
                             65535,
                             -32768,
                             4294967295.0,
                             -2147483648.0,
                             4294967296.0,
                             0.1,
                             double(0.1f),
                             1e300,
                             infinity,
                             -infinity,
                             double(1.5f),
                             1.5,
                             1.5};
    std::vector<HistoryRow> rows;
    qint64 sequence = 0, time = 1700000000000;
    for (const double value : values)
        rows.push_back(rowOf(sequence += 1000, time += 5, value));
    rows.push_back(rowOf(sequence, time, 7, STALE));
    rows.push_back(HistoryRow());
    rows.back().sequence = sequence;
    rows.back().time = std::numeric_limits<qint64>::max();
    const auto found = unpackedRows(packedRows(rows));
    ASSERT_TRUE(found);
    ASSERT_EQ(rows.size(), found->size());
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].sequence, found->at(i).sequence);
        EXPECT_EQ(rows[i].time, found->at(i).time);
        EXPECT_EQ(rows[i].quality, found->at(i).quality);
        EXPECT_EQ(rows[i].hasValue, found->at(i).hasValue);
        if (!rows[i].hasValue) continue;
        EXPECT_EQ(rows[i].value, found->at(i).value) << i;
        EXPECT_EQ(std::signbit(rows[i].value), std::signbit(found->at(i).value)) << i;
    }
}

TEST(RowPack, HoldsNan)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto found = unpackedRows(packedRows({rowOf(1, 1, nan), rowOf(2, 2, nan)}));
    ASSERT_TRUE(found);
    ASSERT_EQ(2u, found->size());
    EXPECT_TRUE(std::isnan(found->at(0).value));
    EXPECT_TRUE(std::isnan(found->at(1).value));
}

// A change on the disk's format shows here: files of stations in use have these bytes. Sequence 1,
// time 300 = 0x2C + 2 * 128, good with a value (4), an integer (1 << 3), 5 in zigzag.
TEST(RowPack, IsInTheBytesOfTheFormat)
{
    EXPECT_EQ(QByteArray::fromHex("01ac020c0a"), packedRows({rowOf(1, 300, 5)}));
    EXPECT_EQ(QByteArray::fromHex("010114000000bf"), packedRows({rowOf(1, 1, -0.5)}));
}

TEST(RowPack, RefusesWhatIsNoPack)
{
    for (const char* const hex : {"01", "0101", "01010c", "010103", "010120", "01011400", "80",
                                  "ffffffffffffffffffff01010c0a"})
        EXPECT_FALSE(unpackedRows(QByteArray::fromHex(hex))) << hex;
    EXPECT_TRUE(unpackedRows(QByteArray()));
}

TEST(RowPack, BearsAnyBytes)
{
    std::mt19937 random(1);
    size_t rows = 0;
    for (int i = 0; i < 20000; ++i) {
        QByteArray bytes;
        for (size_t size = random() % 40; size > 0; --size)
            bytes.append(char(random() % 64));
        if (const auto found = unpackedRows(bytes)) rows += found->size();
    }
    EXPECT_GT(rows, 0u);
}
