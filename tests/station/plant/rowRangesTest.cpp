#include "plant/rowRanges.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

std::set<qint64> rowsOf(const RowRanges& ranges)
{
    std::set<qint64> rows;
    for (const auto& [first, last] : ranges.ranges()) {
        for (qint64 row = first; row <= last; ++row)
            rows.insert(row);
    }
    return rows;
}

} // namespace

TEST(RowRanges, JoinRowsThatFollowEachOther)
{
    RowRanges ranges;
    ranges.add(1, 3);
    ranges.add(5, 6);
    ranges.add(4, 4);
    EXPECT_EQ((RowRanges::Ranges{{1, 6}}), ranges.ranges());
    ranges.remove(3, 4);
    EXPECT_EQ((RowRanges::Ranges{{1, 2}, {5, 6}}), ranges.ranges());
    EXPECT_EQ(4, ranges.count());
}

/// Random changes beside a plain set.
TEST(RowRanges, AreASetOfRows)
{
    std::random_device seeds;
    const unsigned seed = seeds();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    RowRanges ranges;
    std::set<qint64> rows;
    for (int i = 0; i < 5000; ++i) {
        const qint64 first = qint64(random() % 60), last = first - 1 + qint64(random() % 8);
        switch (random() % 4) {
        case 0:
        case 1:
            ranges.add(first, last);
            for (qint64 row = first; row <= last; ++row)
                rows.insert(row);
            break;
        case 2:
            ranges.remove(first, last);
            for (qint64 row = first; row <= last; ++row)
                rows.erase(row);
            break;
        default:
            if (random() % 20 == 0) {
                ranges.removeFrom(first + 40);
                rows.erase(rows.lower_bound(first + 40), rows.end());
                ranges.removeUpTo(first - 40);
                rows.erase(rows.begin(), rows.upper_bound(first - 40));
            }
        }
        ASSERT_EQ(rows, rowsOf(ranges));
        ASSERT_EQ(qint64(rows.size()), ranges.count());
        ASSERT_EQ(rows.count(first) > 0, ranges.has(first));
        const auto next = rows.lower_bound(first);
        ASSERT_EQ(next == rows.end() ? -1 : *next, ranges.from(first, -1).first);
        for (auto range = ranges.ranges().begin(); range != ranges.ranges().end(); ++range)
            ASSERT_EQ(0u, rows.count(range->second + 1));
    }
}
