#include "session/frameGatherer.h"

#include "frameRecords.h"

#include <gtest/gtest.h>

namespace {

std::vector<GatheredFrame> gathered(const std::vector<FrameRecord>& records)
{
    FrameGatherer gatherer;
    std::vector<GatheredFrame> all;
    for (const FrameRecord& record : records) {
        for (const GatheredFrame& frame : gatherer.add(record))
            all.push_back(frame);
    }
    for (const GatheredFrame& frame : gatherer.flush())
        all.push_back(frame);
    return all;
}

} // namespace

TEST(FrameGatherer, JoinsTheReplyFromPiecesOfAnySize)
{
    for (int size = 1; size <= int(READ_REPLY.size()); ++size) {
        std::vector<FrameRecord> records = {sent(0, READ_REQUEST)};
        for (int at = 0; at < int(READ_REPLY.size()); at += size)
            records.push_back(received(1000 + at, READ_REPLY.mid(at, size)));
        const std::vector<GatheredFrame> frames = gathered(records);
        ASSERT_EQ(2u, frames.size()) << size;
        EXPECT_EQ(GatheredFrame::ANSWER, frames[1].kind);
        EXPECT_EQ(READ_REPLY, frames[1].bytes);
        EXPECT_EQ(1000, frames[1].time);
        EXPECT_EQ(READ_REQUEST, frames[1].request);
    }
}

TEST(FrameGatherer, GivesEachFrameTheTimeOfItsFirstByte)
{
    const std::vector<GatheredFrame> frames =
        gathered({sent(10, READ_REQUEST), received(20, "\x55" + READ_REPLY.left(1)),
                  received(30, READ_REPLY.mid(1) + "\x66"), received(40, "\x77")});
    ASSERT_EQ(4u, frames.size());
    EXPECT_EQ(QByteArray("\x55"), frames[1].bytes);
    EXPECT_EQ(20, frames[1].time);
    EXPECT_EQ(READ_REPLY, frames[2].bytes);
    EXPECT_EQ(20, frames[2].time);
    EXPECT_EQ(QByteArray("\x66\x77"), frames[3].bytes);
    EXPECT_EQ(30, frames[3].time);
}

TEST(FrameGatherer, GivesOutReceivedBytesAtTheNextRequest)
{
    const std::vector<GatheredFrame> frames =
        gathered({sent(10, READ_REQUEST), received(20, READ_REPLY.left(4)), sent(30, WRITE_REQUEST),
                  received(40, WRITE_REQUEST)});
    ASSERT_EQ(4u, frames.size());
    EXPECT_EQ(GatheredFrame::STRAY, frames[1].kind);
    EXPECT_EQ(READ_REQUEST, frames[1].request);
    EXPECT_EQ(GatheredFrame::REQUEST, frames[2].kind);
    EXPECT_EQ(GatheredFrame::ANSWER, frames[3].kind);
    EXPECT_EQ(WRITE_REQUEST, frames[3].request);
}

TEST(FrameGatherer, TellsAFenceFromARequest)
{
    const std::vector<GatheredFrame> frames =
        gathered({fence(10, READ_REQUEST), received(20, READ_REPLY), sent(30, READ_REQUEST)});
    ASSERT_EQ(3u, frames.size());
    EXPECT_EQ(GatheredFrame::FENCE, frames[0].kind);
    EXPECT_TRUE(isSent(frames[0]));
    EXPECT_EQ(GatheredFrame::ANSWER, frames[1].kind);
    EXPECT_FALSE(isSent(frames[1]));
    EXPECT_EQ(GatheredFrame::REQUEST, frames[2].kind);
    EXPECT_TRUE(isSent(frames[2]));
}

TEST(FrameGatherer, TakesOneAnswerToARequest)
{
    const std::vector<GatheredFrame> frames =
        gathered({sent(10, READ_REQUEST), received(20, READ_REPLY), received(30, READ_REPLY)});
    ASSERT_EQ(3u, frames.size());
    EXPECT_EQ(GatheredFrame::ANSWER, frames[1].kind);
    EXPECT_EQ(GatheredFrame::STRAY, frames[2].kind);
    EXPECT_EQ(READ_REPLY, frames[2].bytes);
}

/// An answer may come after its time-out.
TEST(FrameGatherer, KnowsTheAnswerThatComesLate)
{
    const std::vector<GatheredFrame> frames =
        gathered({sent(10, READ_REQUEST), noAnswer(20), received(30, READ_REPLY)});
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(GatheredFrame::ANSWER, frames[1].kind);
}

TEST(FrameGatherer, TakesNoAnswerToABroadcast)
{
    const std::vector<GatheredFrame> frames =
        gathered({sent(10, BROADCAST), received(20, BROADCAST)});
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(GatheredFrame::STRAY, frames[1].kind);
}

TEST(FrameGatherer, TakesBytesBeforeAnyRequestAsStray)
{
    const std::vector<GatheredFrame> frames = gathered({received(5, READ_REPLY)});
    ASSERT_EQ(1u, frames.size());
    EXPECT_EQ(GatheredFrame::STRAY, frames[0].kind);
    EXPECT_TRUE(frames[0].request.isEmpty());
}

TEST(FrameGatherer, FindsTheAnswerBehindLongChatter)
{
    FrameGatherer gatherer;
    gatherer.add(sent(0, READ_REQUEST));
    qint64 chatter = 0;
    for (int i = 0; i < 10000; ++i) {
        for (const GatheredFrame& frame : gatherer.add(received(i, QByteArray(7, '\xAA')))) {
            EXPECT_EQ(GatheredFrame::STRAY, frame.kind);
            chatter += frame.bytes.size();
        }
        ASSERT_GE(chatter, 7 * (i + 1) - 1024) << i;
    }
    const std::vector<GatheredFrame> end = gatherer.add(received(10000, READ_REPLY));
    ASSERT_FALSE(end.empty());
    EXPECT_EQ(GatheredFrame::ANSWER, end.back().kind);
    EXPECT_EQ(READ_REPLY, end.back().bytes);
    if (end.size() > 1) chatter += end.front().bytes.size();
    EXPECT_EQ(70000, chatter);
}

TEST(FrameGatherer, KeepsAnAnswerThatBeginsInLongChatter)
{
    for (int chatter = 1000; chatter < 1040; ++chatter) {
        const std::vector<GatheredFrame> frames = gathered(
            {sent(0, READ_REQUEST), received(1, QByteArray(chatter, '\xAA') + READ_REPLY.left(4)),
             received(2, READ_REPLY.mid(4))});
        ASSERT_EQ(GatheredFrame::ANSWER, frames.back().kind) << chatter;
        EXPECT_EQ(READ_REPLY, frames.back().bytes) << chatter;
    }
}

TEST(FrameGatherer, HoldsNothingAfterAFlush)
{
    FrameGatherer gatherer;
    gatherer.add(received(1, "abc"));
    EXPECT_EQ(1u, gatherer.flush().size());
    EXPECT_TRUE(gatherer.flush().empty());
}
