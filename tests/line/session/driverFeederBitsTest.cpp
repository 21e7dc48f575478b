#include "sessionBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

// Bits that are read through their words. Bit k of word w is bit 16 w + k, and the markers begin at
// 3000. Function 5 writes a coil, function 3 reads holding registers.

namespace {

enum {
    JOB = 1,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    READ_HOLDING_CODE = 3,
    WRITE_COIL_CODE = 5,
    ILLEGAL_ADDRESS = 2
};

int bitOf(int word, int bit)
{
    return 3000 + 16 * (word - 3000) + bit;
}

Tag bitTagOf(int word, int bit)
{
    return tagOf("MX", bitOf(word, bit), Tag::BOOL);
}

/// Sixty scattered pairs of words, so that a cycle takes half a second. Tags 2 i and 2 i + 1 are
/// bit 3 of word 3000 + 50 i and bit 12 of the next word.
std::vector<Tag> longCycle()
{
    std::vector<Tag> tags;
    for (int i = 0; i < 60; ++i) {
        tags.push_back(bitTagOf(3000 + 50 * i, 3));
        tags.push_back(bitTagOf(3001 + 50 * i, 12));
    }
    return tags;
}

} // namespace

class DriverFeederBitsTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederBitsTest, EachBitOfSeveralWordsIsShown)
{
    std::vector<Tag> tags;
    for (int bit = 0; bit < 48; ++bit)
        tags.push_back(tagOf("QX", 16 * 5 + bit, Tag::BOOL));
    bench.poll(tags);
    ASSERT_EQ(1u, bench.blocks.size());
    bench.run(SECOND);
    for (int on = 0; on < 48; ++on) {
        for (int word = 0; word < 3; ++word)
            bench.plc.station(1).holding[5 + word] = on / 16 == word ? 1 << on % 16 : 0;
        bench.run(SECOND / 5);
        for (int bit = 0; bit < 48; ++bit)
            ASSERT_EQ(bit == on ? 1 : 0, bench.shown(bit)) << bit << " with bit " << on << " on";
    }
}

TEST_F(DriverFeederBitsTest, WordsAndTheirBitsShareABlock)
{
    bench.plc.station(1).inputs = {{8, 0x8001}, {9, 77}};
    bench.poll({tagOf("IX", 16 * 8 + 15, Tag::BOOL), tagOf("IW", 8, Tag::UINT32),
                tagOf("IX", 16 * 8 + 14, Tag::BOOL), tagOf("IX", 16 * 9, Tag::BOOL)});
    ASSERT_EQ(1u, bench.blocks.size());
    bench.run(SECOND);
    EXPECT_EQ(1, bench.shown(0));
    EXPECT_EQ(0x8001 + 77 * 65536, bench.shown(1));
    EXPECT_EQ(0, bench.shown(2));
    EXPECT_EQ(1, bench.shown(3));
    EXPECT_EQ(1, bench.sink.tags[0].bytes.size());
}

TEST_F(DriverFeederBitsTest, OnlyTheChangedBitOfAWordIsTold)
{
    bench.poll({bitTagOf(3010, 0), bitTagOf(3010, 1), bitTagOf(3011, 1), tagOf("MW", 3010)});
    bench.run(SECOND);
    bench.plc.station(1).holding[3010] = 2;
    bench.run(SECOND);
    EXPECT_EQ(0, bench.sink.tags[0].changes);
    EXPECT_EQ(1, bench.sink.tags[1].changes);
    EXPECT_EQ(0, bench.sink.tags[2].changes);
    EXPECT_EQ(1, bench.sink.tags[3].changes);
}

TEST_F(DriverFeederBitsTest, ReadJobShowsBitsOfWords)
{
    bench.plc.station(1).holding = {{3010, 1 << 4}, {3011, 1 << 15}};
    bench.know({bitTagOf(3010, 4), bitTagOf(3011, 15), bitTagOf(3011, 14)});
    ASSERT_EQ(1u, bench.blocks.size());
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(1, bench.shown(0));
    EXPECT_EQ(1, bench.shown(1));
    EXPECT_EQ(0, bench.shown(2));
}

TEST_F(DriverFeederBitsTest, WrittenBitIsWrittenAsACoilAndItsWordIsReadNext)
{
    const std::vector<Tag> tags = longCycle();
    bench.poll(tags);
    bench.run(2 * SECOND);
    for (const int tag : {5, 60, 119}) {
        bench.run(SECOND); // the driver polls a block after three writes and reads
        bench.sent.clear();
        const int number = tags[size_t(tag)].number;
        bench.feeder.addWrite(JOB + tag, {bitWriteOf("MX", number, true)});
        ASSERT_TRUE(bench.runUntilEnded(JOB + tag));
        EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + tag));
        EXPECT_EQ(1, bench.sentWith(1, WRITE_COIL_CODE));
        bench.sent.clear();
        ASSERT_TRUE(bench.runUntil([&] { return bench.shown(tag) == 1; }, SECOND));
        ASSERT_EQ(1u, bench.sent.size()) << tag;
        const int word = 3000 + (number - 3000) / 16;
        EXPECT_EQ(word, static_cast<unsigned char>(bench.sent[0].at(2)) * 256 +
                            static_cast<unsigned char>(bench.sent[0].at(3)));
        EXPECT_EQ(1, bench.sent[0].at(5));
    }
}

TEST_F(DriverFeederBitsTest, WrittenBitIsAlsoShownInTheWordsTag)
{
    bench.poll({tagOf("MW", 3010), bitTagOf(3010, 4)});
    bench.run(SECOND);
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", bitOf(3010, 4), true)});
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    bench.run(SECOND / 10);
    EXPECT_EQ(1 << 4, bench.shown(0));
    EXPECT_EQ(1, bench.shown(1));
}

// The read after a write reads only the first word of the block.
TEST_F(DriverFeederBitsTest, ReadAfterAWriteIsAReadOfItsWordOnly)
{
    const std::vector<Tag> tags = longCycle();
    bench.poll(tags);
    bench.run(2 * SECOND);
    const int reads = bench.sink.tags[1].reads;
    ASSERT_TRUE(bench.runUntil([&] { return bench.sink.tags[1].reads > reads; }));
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", tags[0].number, true)});
    ASSERT_TRUE(bench.runUntil([&] { return bench.shown(0) == 1; }, SECOND / 4));
    EXPECT_EQ(reads + 2, bench.sink.tags[0].reads);
    EXPECT_EQ(reads + 1, bench.sink.tags[1].reads);
}

TEST_F(DriverFeederBitsTest, RefusedWriteLeavesTheBitAndReadsNothing)
{
    bench.plc.station(1).refusals[bitOf(3000, 3)] = ILLEGAL_ADDRESS;
    bench.poll(longCycle());
    bench.run(2 * SECOND);
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", bitOf(3000, 3), true)});
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    bench.run(SECOND);
    EXPECT_EQ(0, bench.shown(0));
    EXPECT_EQ(0, bench.sink.tags[0].changes);
}

TEST_F(DriverFeederBitsTest, WriteWithoutPollingReadsNothing)
{
    bench.know({bitTagOf(3010, 4), bitTagOf(3011, 4)});
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", bitOf(3010, 4), true)});
    bench.run(SECOND);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(0, bench.sentWith(1, READ_HOLDING_CODE));
}

TEST_F(DriverFeederBitsTest, WordWithManyWrittenBitsIsReadSeldom)
{
    std::vector<Tag> tags;
    std::vector<ElementWrite> writes;
    for (int bit = 0; bit < 320; ++bit) {
        tags.push_back(tagOf("MX", 3000 + bit, Tag::BOOL));
        writes.push_back(bitWriteOf("MX", 3000 + bit, true));
    }
    bench.poll(tags);
    bench.run(SECOND);
    bench.sent.clear();
    bench.feeder.addWrite(JOB, writes);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(320, bench.sentWith(1, WRITE_COIL_CODE));
    // Twenty words. A word is read again when a read of it began before its last write.
    bench.run(5 * SECOND);
    for (int tag = 0; tag < 320; ++tag)
        ASSERT_EQ(1, bench.shown(tag)) << tag;
    const auto readsOneWord = [](const QByteArray& request) {
        return request.at(1) == READ_HOLDING_CODE && request.at(5) == 1;
    };
    EXPECT_LE(std::count_if(bench.sent.begin(), bench.sent.end(), readsOneWord), 40);
}

// One writer, so the PLC's bit has every value that was written, in this order. The shown values
// must follow it without going back.
TEST_F(DriverFeederBitsTest, ShownBitNeverGoesBackToAnEarlierValue)
{
    enum { WRITES = 1000, TAG = 30 };
    std::mt19937 random(11);
    const std::vector<Tag> tags = longCycle();
    int told = 0;
    int wrong = 0;
    int last = 0;
    bench.sink.onValue = [&](int tag, const QByteArray& bytes) {
        if (tag != TAG) return;
        const int value = bytes.at(0);
        if (value != int(bench.plc.coil(1, tags[TAG].number))) ++wrong;
        if (value != last) ++told;
        last = value;
    };
    bench.line.losesRequest = [&] { return random() % 50 == 0; };
    bench.line.comesAgain = [&] {
        return random() % 10 == 0 ? qint64(random() % (30u * MS)) : qint64(ModelLine::ONCE);
    };
    bench.poll(tags);
    bench.run(2 * SECOND);
    for (int i = 1; i <= WRITES; ++i) {
        bench.feeder.addWrite(i, {bitWriteOf("MX", tags[TAG].number, i % 2 != 0)});
        ASSERT_TRUE(bench.runUntilEnded(i));
        bench.run(qint64(random() % (100u * MS)));
    }
    EXPECT_EQ(0, wrong);
    EXPECT_GT(told, WRITES / 2);
    EXPECT_LE(told, int(WRITES));
}
