#include "mergeRule.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

enum { JOINS = 0, STAYS_APART = 1, MERGE_LIMIT = 32 };

/// Verdict on a key at `addr` and one of a single unit at `nextAddr`.
int judge(const char* area, int addr, int count, int nextAddr, int mode)
{
    return judgeAddrMerge(key(1, area, addr, count), key(1, area, nextAddr, 1), mode);
}

} // namespace

class MergeRule : public DriverTest
{
protected:
    MergeRule()
    {
        driver.mergeLimit = MERGE_LIMIT;
    }
};

TEST_F(MergeRule, KeysOfOtherStationsOrAreasStayApart)
{
    for (int mode : {0, 1}) {
        for (const char* area : {"IX", "IW", "MW"}) {
            SCOPED_TRACE(testing::Message() << area << " mode " << mode);
            const KEY_ADDRESS first = key(1, area, 3000, 1);
            EXPECT_EQ(JOINS, judgeAddrMerge(first, key(1, area, 3000, 1), mode));
            for (const KEY_ADDRESS& other :
                 {key(2, area, 3000, 1), key(1, "QX", 3000, 1), key(1, "QW", 3000, 1),
                  key(1, text(area).toLower().toLatin1().constData(), 3000, 1)})
                EXPECT_EQ(STAYS_APART, judgeAddrMerge(first, other, mode)) << blockText(other);
        }
    }
}

TEST_F(MergeRule, WordsJoinOnlyAtTheSameAddress)
{
    for (const char* area : {"MW", "IW", "QW"}) {
        for (int mode : {0, 1}) {
            SCOPED_TRACE(testing::Message() << area << " mode " << mode);
            for (int count : {1, 2, 5}) {
                EXPECT_EQ(STAYS_APART, judge(area, 10, count, 9, mode)) << count;
                EXPECT_EQ(JOINS, judge(area, 10, count, 10, mode)) << count;
                EXPECT_EQ(STAYS_APART, judge(area, 10, count, 11, mode)) << count;
                EXPECT_EQ(STAYS_APART, judge(area, 10, count, 12, mode)) << count;
            }
        }
    }
}

TEST_F(MergeRule, AdjacentBitsJoinWithoutAGap)
{
    for (const char* area : {"IX", "QX"}) {
        SCOPED_TRACE(area);
        EXPECT_EQ(JOINS, judge(area, 3, 1, 4, 0));
        EXPECT_EQ(JOINS, judge(area, 3, 5, 4, 0));
        EXPECT_EQ(STAYS_APART, judge(area, 3, 1, 5, 0));
    }
    EXPECT_EQ(JOINS, judge("MX", 3000, 2, 3002, 0));
    EXPECT_EQ(STAYS_APART, judge("MX", 3000, 2, 3003, 0));
}

TEST_F(MergeRule, AGapUpToTheMergeLimitIsReadAlong)
{
    driver.mergeLimit = 4;
    EXPECT_EQ(JOINS, judge("IX", 0, 1, 5, 1));
    EXPECT_EQ(STAYS_APART, judge("IX", 0, 1, 6, 1));
    EXPECT_EQ(JOINS, judge("MX", 3000, 1, 3005, 1));
    EXPECT_EQ(STAYS_APART, judge("MX", 3000, 1, 3006, 1));
}

TEST_F(MergeRule, EveryModeButZeroReadsGapsAlong)
{
    for (int mode : {1, 2, -1}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(JOINS, judge("IX", 0, 1, 9, mode));
        EXPECT_EQ(JOINS, judge("MX", 3007, 1, 3008, mode));
    }
}

TEST_F(MergeRule, BitsJoinWithinTheirGroup)
{
    struct
    {
        const char* area;
        int from;
        int mode;
        int group;
    } const rows[] = {
        {"IX", 0, 0, 16},
        {"IX", 0, 1, 16},
        {"QX", 0, 0, 16},
        {"QX", 0, 1, 16},
        // Both 3000 / 16 and (3000 - 3000) / 16 count, and 3000 is 8 past a multiple of 16.
        {"MX", 3000, 0, 8},
        {"MX", 3000, 1, 16},
    };
    const int everything = 64;
    for (const auto& row : rows) {
        for (int a = 0; a < 48; ++a) {
            for (int b = a; b < 48; ++b) {
                SCOPED_TRACE(testing::Message()
                             << row.area << " " << a << " " << b << " mode " << row.mode);
                ASSERT_EQ(a / row.group == b / row.group ? JOINS : STAYS_APART,
                          judge(row.area, row.from + a, everything, row.from + b, row.mode));
            }
        }
    }
}

TEST_F(MergeRule, GroupsBelowTheirOriginAreTruncatedTowardsIt)
{
    for (int mode : {0, 1}) {
        SCOPED_TRACE(mode);
        EXPECT_EQ(JOINS, judge("IX", -15, 64, 15, mode));
        EXPECT_EQ(STAYS_APART, judge("IX", -16, 64, 15, mode));
        EXPECT_EQ(STAYS_APART, judge("IX", -15, 64, 16, mode));
    }
    EXPECT_EQ(JOINS, judge("MX", 2985, 64, 3015, 1));
    EXPECT_EQ(STAYS_APART, judge("MX", 2984, 64, 3015, 1));
    EXPECT_EQ(STAYS_APART, judge("MX", 2985, 64, 3016, 1));
    EXPECT_EQ(JOINS, judge("MX", 2992, 64, 3007, 0));
    EXPECT_EQ(STAYS_APART, judge("MX", 2991, 64, 3007, 0));
    EXPECT_EQ(STAYS_APART, judge("MX", 2992, 64, 3008, 0));
}

TEST_F(MergeRule, UnknownAreasJoinWhereverTheGapAllows)
{
    EXPECT_EQ(JOINS, judge("ZZ", 0, 100, 50, 0));
    EXPECT_EQ(JOINS, judge("ZZ", 0, 100, 100, 0));
    EXPECT_EQ(STAYS_APART, judge("ZZ", 0, 100, 101, 0));
    EXPECT_EQ(JOINS, judge("ZZ", 0, 100, 100 + MERGE_LIMIT, 1));
    EXPECT_EQ(STAYS_APART, judge("ZZ", 0, 100, 101 + MERGE_LIMIT, 1));
    EXPECT_EQ(JOINS, judge("MX_bit", 3000, 100, 3050, 0));
}

TEST_F(MergeRule, AKeyOfNegativeCountLeavesAGapBeforeTheNext)
{
    EXPECT_EQ(JOINS, judge("IX", 5, 0, 5, 0));
    EXPECT_EQ(STAYS_APART, judge("IX", 5, -1, 5, 0));
    EXPECT_EQ(JOINS, judge("IX", 5, -MERGE_LIMIT, 5, 1));
    EXPECT_EQ(STAYS_APART, judge("IX", 5, -MERGE_LIMIT - 1, 5, 1));
}

TEST_F(MergeRule, AddressesAtBothEndsOfTheNumbersStayApart)
{
    for (const char* area : {"MW", "IX", "MX"}) {
        for (int mode : {0, 1}) {
            SCOPED_TRACE(testing::Message() << area << " mode " << mode);
            EXPECT_EQ(STAYS_APART, judge(area, INT_MIN, 1, INT_MAX - 100, mode));
            EXPECT_EQ(STAYS_APART, judge(area, INT_MIN, INT_MAX, INT_MAX - 100, mode));
        }
    }
}
