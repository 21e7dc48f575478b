#include "faultedReply.h"

#include "hexText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

const int TRIES = 500;

Bytes goodReply()
{
    return bytesOf("01 03 06 00 01 00 02 FF FF BC C5"); // pymodbus 3.0's RTU framer
}

int bitsThatDiffer(const Bytes& first, const Bytes& second)
{
    int differing = 0;
    for (std::size_t bit = 0; bit < first.size() * 8; ++bit) {
        if (((first[bit / 8] ^ second[bit / 8]) >> bit % 8 & 1) != 0) ++differing;
    }
    return differing;
}

Bytes spoiltBy(Fault fault, std::mt19937& random)
{
    return faultedReply(fault, goodReply(), drawsFor(fault, random));
}

bool startsWith(const Bytes& bytes, const Bytes& start)
{
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin());
}

bool endsWith(const Bytes& bytes, const Bytes& end)
{
    return bytes.size() >= end.size() && std::equal(end.rbegin(), end.rend(), bytes.rbegin());
}

} // namespace

TEST(FaultedReply, ExceptionReplyHasFunctionWithTopBitAndCode)
{
    // pymodbus 3.0's RTU framer
    EXPECT_EQ("01 83 06 C1 32", hexOf(exceptionReply(bytesOf("01 03 0B B8 00 01 06 0B"), 6)));
    EXPECT_EQ("01 90 06 CC 02",
              hexOf(exceptionReply(bytesOf("01 10 00 0A 00 01 02 00 01 00 00"), 6)));
}

TEST(FaultedReply, CorruptFlipsOneBitAnywhere)
{
    std::mt19937 random(1);
    std::set<Bytes> seen;
    for (int i = 0; i < TRIES; ++i) {
        const Bytes spoilt = spoiltBy(FAULT_CORRUPT, random);
        ASSERT_EQ(goodReply().size(), spoilt.size());
        ASSERT_EQ(1, bitsThatDiffer(goodReply(), spoilt));
        seen.insert(spoilt);
    }
    EXPECT_GT(seen.size(), 80u); // of 88 bits
}

TEST(FaultedReply, TruncatedReplyIsAProperStartOfTheReply)
{
    std::mt19937 random(1);
    std::set<std::size_t> lengths;
    for (int i = 0; i < TRIES; ++i) {
        const Bytes spoilt = spoiltBy(FAULT_TRUNCATE, random);
        ASSERT_TRUE(startsWith(goodReply(), spoilt));
        lengths.insert(spoilt.size());
    }
    EXPECT_EQ(1u, *lengths.begin());
    EXPECT_EQ(goodReply().size() - 1, *lengths.rbegin());
}

TEST(FaultedReply, OneToThreeStrayBytesBeforeOrAfter)
{
    std::mt19937 random(1);
    std::set<std::size_t> ahead;
    std::set<std::size_t> behind;
    for (int i = 0; i < TRIES; ++i) {
        const Bytes before = spoiltBy(FAULT_STRAY_BEFORE, random);
        const Bytes after = spoiltBy(FAULT_STRAY_AFTER, random);
        ASSERT_TRUE(endsWith(before, goodReply()));
        ASSERT_TRUE(startsWith(after, goodReply()));
        ahead.insert(before.size() - goodReply().size());
        behind.insert(after.size() - goodReply().size());
    }
    EXPECT_EQ((std::set<std::size_t>{1, 2, 3}), ahead);
    EXPECT_EQ((std::set<std::size_t>{1, 2, 3}), behind);
}

TEST(FaultedReply, ReplyOfWrongStationHasAGoodChecksum)
{
    std::mt19937 random(1);
    for (int i = 0; i < TRIES; ++i) {
        const Bytes other = spoiltBy(FAULT_WRONG_STATION, random);
        ASSERT_EQ(goodReply().size(), other.size());
        ASSERT_NE(1, other[STATION_AT]);
        ASSERT_GE(other[STATION_AT], 1);
        ASSERT_LE(other[STATION_AT], 247);
        ASSERT_TRUE(endsWithItsCrc(other.data(), other.size()));
        ASSERT_TRUE(std::equal(other.begin() + 1, other.end() - 2, goodReply().begin() + 1));
    }
}

TEST(FaultedReply, OtherFaultsDoNotChangeTheBytes)
{
    std::mt19937 random(1);
    for (const Fault fault : {NO_FAULT, FAULT_DELAY, FAULT_DUPLICATE, FAULT_EXCEPTION})
        EXPECT_EQ(goodReply(), spoiltBy(fault, random)) << fault;
}
