#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

// What a sink is told to be the PLC's own value: never a value that is still to be written, and
// after each write what the PLC then holds, for every tag that shares the written memory.

namespace {

enum { JOB = 1, MS = SessionBench::MS, SECOND = SessionBench::SECOND, WORD = 3100 };

Tag once(Tag tag)
{
    tag.rate.kind = ReadRate::ONCE;
    return tag;
}

int numberOf(const QByteArray& bytes)
{
    int number = 0;
    for (int at = int(bytes.size()) - 1; at >= 0; --at)
        number = number * 256 + static_cast<unsigned char>(bytes.at(at));
    return number;
}

bool isWriteOfRegister(const QByteArray& request)
{
    return request.size() > 1 && request.at(1) == 6;
}

} // namespace

class AnsweredTagsTest : public testing::Test
{
protected:
    int told(int tag)
    {
        return bench.sink.told.count(tag) != 0 ? numberOf(bench.sink.told[tag]) : -1;
    }

    SessionBench bench;
};

// A read is under way while the write is handed in:
//
//   line             [read   5]     [write  echo]
//   write asked          |
//   driver's cache   5   7 (still to be written)
//   told                      5                 7
TEST_F(AnsweredTagsTest, ValueToBeWrittenIsNotToldBeforeItsEcho)
{
    bench.plc.setElement(1, "MW", WORD, 5);
    bench.poll({tagOf("MW", WORD)});
    bench.run(SECOND);
    ASSERT_TRUE(bench.runUntil([&] { return !bench.line.isQuiet(); }));
    std::vector<int> seen;
    bench.sink.onRead = [&](int, const QByteArray& bytes) { seen.push_back(numberOf(bytes)); };
    bench.writeWord(JOB, WORD, 7);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ((std::vector<int>{5, 7}), seen);
}

TEST_F(AnsweredTagsTest, RefusedValueIsNeverTold)
{
    bench.plc.setElement(1, "MW", WORD, 5);
    bench.poll({tagOf("MW", WORD)});
    bench.run(SECOND);
    ASSERT_TRUE(bench.runUntil([&] { return !bench.line.isQuiet(); }));
    bool isToldEarly = false;
    bench.sink.onRead = [&](int, const QByteArray& bytes) {
        isToldEarly = isToldEarly || numberOf(bytes) != 5;
    };
    bench.plc.station(1).refusals[WORD] = 2;
    bench.writeWord(JOB, WORD, 7);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    bench.plc.station(1).refusals.clear();
    bench.run(SECOND);
    EXPECT_FALSE(isToldEarly);
}

TEST_F(AnsweredTagsTest, WrittenWordIsToldToEveryTagInIt)
{
    bench.poll({once(tagOf("MW", WORD)), once(tagOf("MX", 3000 + 100 * 16 + 3, Tag::BOOL)),
                once(tagOf("MX", 3000 + 100 * 16 + 4, Tag::BOOL))});
    bench.run(SECOND);
    bench.writeWord(JOB, WORD, 8);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(8, told(0));
    EXPECT_EQ(1, told(1)); // 8 is bit 3
    EXPECT_EQ(0, told(2));
}

TEST_F(AnsweredTagsTest, WrittenBitIsToldAndItsWordIsRead)
{
    bench.plc.setElement(1, "MW", WORD, 1);
    bench.poll({once(tagOf("MW", WORD)), once(tagOf("MX", 3000 + 100 * 16 + 3, Tag::BOOL))});
    bench.run(SECOND);
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", 3000 + 100 * 16 + 3, true)});
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(1, told(1));
    bench.run(SECOND);
    EXPECT_EQ(9, told(0));
}

TEST_F(AnsweredTagsTest, HalfWrittenTagIsNeverMadeOfTwoTimesButReadAgain)
{
    bench.plc.setElement(1, "MW", WORD, 1);
    bench.plc.setElement(1, "MW", WORD + 1, 1);
    bench.poll({once(tagOf("MW", WORD, Tag::UINT32))});
    bench.run(SECOND);
    ASSERT_EQ(0x10001, told(0));
    bench.plc.setElement(1, "MW", WORD + 1, 2);
    std::vector<int> seen;
    bench.sink.onRead = [&](int, const QByteArray& bytes) { seen.push_back(numberOf(bytes)); };
    bench.writeWord(JOB, WORD, 3);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    bench.run(SECOND);
    EXPECT_EQ(std::vector<int>{0x20003}, seen);
}

TEST_F(AnsweredTagsTest, FailedWriteThatWasExecutedIsFoundOutByARead)
{
    bench.poll({once(tagOf("MW", WORD)), tagOf("MW", WORD + 1000)});
    bench.run(SECOND);
    bench.line.disturb = [](const QByteArray& request, ModelLine::Coming& coming) {
        if (isWriteOfRegister(request)) coming.bytes = QByteArray::fromHex("0106ABCDEF"); // noise
    };
    bench.writeWord(JOB, WORD, 7);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    ASSERT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(0, told(0));
    bench.run(5 * SECOND);
    EXPECT_EQ(7, bench.plc.word(1, WORD));
    EXPECT_EQ(7, told(0));
}

TEST_F(AnsweredTagsTest, DownloadedRecipeIsToldBlockByBlockAheadOfItsEnd)
{
    const Tag first = tagOf("MW", WORD, Tag::UINT32);
    const Tag second = tagOf("MW", WORD + 500);
    bench.poll({once(first), once(second)});
    bench.run(SECOND);
    QByteArray wide = wordBytes(2) + wordBytes(1);
    bench.feeder.addRecipe(download(JOB, {first, second}, {wide, wordBytes(9)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(0x10002, told(0));
    EXPECT_EQ(9, told(1));
}

TEST_F(AnsweredTagsTest, StationsAreToldWhenTheyAnswerAndWhenTheyFallSilent)
{
    using Changes = std::vector<std::pair<int, bool>>;
    bench.plc.station(2);
    bench.pollTwoStations(WORD);
    EXPECT_EQ((Changes{{1, true}, {2, true}}), bench.sink.stations);
    bench.plc.station(2).silent = true;
    bench.run(5 * SECOND);
    ASSERT_EQ(3u, bench.sink.stations.size());
    EXPECT_EQ(std::make_pair(2, false), bench.sink.stations.back());
    bench.plc.station(2).silent = false;
    bench.run(60LL * SECOND);
    EXPECT_EQ(std::make_pair(2, true), bench.sink.stations.back());
}
