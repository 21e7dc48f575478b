#include "values/frameLog.h"

#include "frameRecords.h"

#include <gtest/gtest.h>

namespace {

const qint64 TIME = 1700000000123;

/// A frame that no other number has: of 0 to 299 bytes.
QByteArray frameOf(int number)
{
    return QByteArray(number % 300, char(number % 251));
}

} // namespace

TEST(FrameLog, KeepsTheFramesInOrderWithTimeAndDirection)
{
    FrameLog log;
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    log.add(TIME + 1, FrameRecord::NO_ANSWER, QByteArray());
    log.add(TIME + 2, FrameRecord::SENT_FENCE, WRITE_REQUEST);
    log.add(TIME - 5, FrameRecord::RECEIVED, READ_REPLY); // the wall clock was set back
    const std::vector<LoggedFrame> frames = log.since(0);
    ASSERT_EQ(4u, frames.size());
    const LoggedFrame expected[] = {{1, TIME, FrameRecord::SENT, READ_REQUEST},
                                    {2, TIME + 1, FrameRecord::NO_ANSWER, QByteArray()},
                                    {3, TIME + 2, FrameRecord::SENT_FENCE, WRITE_REQUEST},
                                    {4, TIME - 5, FrameRecord::RECEIVED, READ_REPLY}};
    for (size_t i = 0; i < frames.size(); ++i) {
        EXPECT_EQ(expected[i].number, frames[i].number);
        EXPECT_EQ(expected[i].time, frames[i].time);
        EXPECT_EQ(expected[i].direction, frames[i].direction);
        EXPECT_EQ(expected[i].bytes, frames[i].bytes);
    }
}

TEST(FrameLog, TellsOnlyTheFramesBehindANumber)
{
    FrameLog log;
    EXPECT_TRUE(log.since(0).empty());
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    log.add(TIME, FrameRecord::RECEIVED, READ_REPLY);
    const std::vector<LoggedFrame> frames = log.since(1);
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(2u, frames[0].number);
    EXPECT_EQ(READ_REPLY, frames[0].bytes);
    EXPECT_TRUE(log.since(2).empty());
}

TEST(FrameLog, ForgetsTheOldestFrames)
{
    FrameLog log;
    const int all = 3 * FrameLog::MOST_FRAMES + 7;
    for (int number = 1; number <= all; ++number)
        log.add(TIME + number, FrameRecord::RECEIVED, frameOf(number));
    const std::vector<LoggedFrame> frames = log.since(0);
    ASSERT_EQ(size_t(FrameLog::MOST_FRAMES), frames.size());
    int number = all - FrameLog::MOST_FRAMES;
    for (const LoggedFrame& frame : frames) {
        ++number;
        ASSERT_EQ(quint64(number), frame.number);
        ASSERT_EQ(TIME + number, frame.time);
        ASSERT_EQ(frameOf(number), frame.bytes);
    }
    EXPECT_EQ(quint64(all), log.lastNumber());
}

TEST(FrameLog, KeepsFewerFramesWhereThereAreManyLinks)
{
    EXPECT_EQ(1000u, FrameLog::mostOfEach(0));
    EXPECT_EQ(1000u, FrameLog::mostOfEach(1));
    EXPECT_EQ(1000u, FrameLog::mostOfEach(100));
    EXPECT_EQ(200u, FrameLog::mostOfEach(500));
    EXPECT_EQ(100u, FrameLog::mostOfEach(1000));
    EXPECT_EQ(100u, FrameLog::mostOfEach(100000));
}

TEST(FrameLog, ForgetsAtOnceWhatItIsNotToKeep)
{
    FrameLog log;
    for (int number = 1; number <= 10; ++number)
        log.add(TIME + number, FrameRecord::RECEIVED, frameOf(number));
    log.keep(3);
    ASSERT_EQ(3u, log.since(0).size());
    EXPECT_EQ(8u, log.since(0)[0].number);
    EXPECT_EQ(frameOf(8), log.since(0)[0].bytes);
    log.add(TIME + 11, FrameRecord::RECEIVED, frameOf(11));
    ASSERT_EQ(3u, log.since(0).size());
    EXPECT_EQ(9u, log.since(0)[0].number);
    EXPECT_EQ(11u, log.lastNumber());
}

TEST(FrameLog, KeepsTheBeginningOfAFrameThatIsTooLong)
{
    FrameLog log;
    QByteArray tooLong(FrameLog::MOST_BYTES_OF_FRAME, 'a');
    log.add(TIME, FrameRecord::RECEIVED, tooLong + QByteArray("b"));
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    const std::vector<LoggedFrame> frames = log.since(0);
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(tooLong, frames[0].bytes);
    EXPECT_EQ(READ_REQUEST, frames[1].bytes);
}
