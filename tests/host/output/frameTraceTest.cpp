#include "output/frameTrace.h"
#include "output/frameGatherer.h"
#include "verbOutput.h"

#include <gtest/gtest.h>

#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3, 6.6, 7); checksums by pymodbus'
// computeCRC.

namespace {

const QByteArray READ_REQUEST = QByteArray::fromHex("01030BB80002460A");
const QByteArray READ_REPLY = QByteArray::fromHex("010304123456788107");
const QByteArray WRITE_REQUEST = QByteArray::fromHex("01060BB904D2D896");
const QByteArray REFUSAL = QByteArray::fromHex("018302C0F1");
const QByteArray BROADCAST = QByteArray::fromHex("00060BB904D2D947");

FrameRecord sent(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::SENT, bytes};
}

FrameRecord fence(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::SENT_FENCE, bytes};
}

FrameRecord received(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::RECEIVED, bytes};
}

FrameRecord noAnswer(qint64 time)
{
    return {time, FrameRecord::NO_ANSWER, QByteArray()};
}

std::string tracedTo(const std::function<void(FrameTrace&)>& add)
{
    return printed([&](std::FILE* out) {
        FrameTrace trace(out);
        add(trace);
    });
}

std::string traced(const std::vector<FrameRecord>& records, bool flush = true)
{
    return tracedTo([&](FrameTrace& trace) {
        for (const FrameRecord& record : records)
            trace.add(record);
        if (flush) trace.flush();
    });
}

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

const char* const REQUEST_LINE =
    "    1.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers from 3000\n";

} // namespace

TEST(FrameTrace, WritesALineForEachFrame)
{
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78 81 07  station 1: 2 registers 0x1234 "
                  "0x5678\n",
              traced({sent(1250000, READ_REQUEST), received(1256120, READ_REPLY)}));
}

TEST(FrameTrace, MarksFencesAndExplainsTheirReplies)
{
    EXPECT_EQ("    1.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers from "
              "3000, a fence\n"
              "    1.256120 < 01 03 04 12 34 56 78 81 07  station 1: 2 registers 0x1234 0x5678\n",
              traced({fence(1250000, READ_REQUEST), received(1256120, READ_REPLY)}));
}

TEST(FrameTrace, NamesTheEchoOfARequest)
{
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.252000 < 01 03 0B B8 00 02 46 0A  echo of the request\n"
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              traced({sent(1250000, READ_REQUEST), received(1252000, READ_REQUEST),
                      received(1256120, REFUSAL)}));
}

TEST(FrameTrace, WritesAReplyWithoutAFlush)
{
    const std::string lines =
        traced({sent(1250000, READ_REQUEST), received(1256120, REFUSAL)}, false);
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              lines);
}

TEST(FrameTrace, HoldsAnUnfinishedReplyUntilTheFlush)
{
    const std::vector<FrameRecord> records = {sent(1250000, READ_REQUEST),
                                              received(1256120, READ_REPLY.left(7))};
    EXPECT_EQ(REQUEST_LINE, traced(records, false));
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78  stray: 7 bytes of a reply of 9\n",
              traced(records));
}

TEST(FrameTrace, ShowsStrayBytesOnSeparateLines)
{
    const QByteArray noise = QByteArray::fromHex("FF");
    EXPECT_EQ(
        std::string(REQUEST_LINE) + "    1.256120 < FF  stray: 1 byte that is no frame\n"
                                    "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: "
                                    "illegal address\n"
                                    "    1.256120 < FF FF  stray: 2 bytes that are no frame\n",
        traced({sent(1250000, READ_REQUEST), received(1256120, noise + REFUSAL + noise + noise)}));
}

TEST(FrameTrace, KeepsTheColumnsOverDays)
{
    const std::string line = traced({sent(86400000001LL, BROADCAST)});
    EXPECT_EQ("86400.000001 > 00 06 0B B9 04 D2 D9 47  broadcast: write register 3001 = 1234\n",
              line);
}

/// An unanswered fence ends twice: as a fence, and as an attempt of the request behind it.
TEST(FrameTrace, SaysOnceThatNoAnswerCame)
{
    EXPECT_EQ(std::string(REQUEST_LINE) + "    1.752999 ! station 1: no answer within 502 ms\n",
              traced({sent(1250000, READ_REQUEST), noAnswer(1752999), noAnswer(1752999)}));
}

TEST(FrameTrace, SaysThatNoAnswerCameBehindAnEcho)
{
    EXPECT_EQ(
        std::string(REQUEST_LINE) + "    1.252000 < 01 03 0B B8 00 02 46 0A  echo of the request\n"
                                    "    1.752000 ! station 1: no answer within 502 ms\n",
        traced({sent(1250000, READ_REQUEST), received(1252000, READ_REQUEST), noAnswer(1752000)}));
}

TEST(FrameTrace, NeverSaysThatNoAnswerCameToAnAnsweredOrAMissingRequest)
{
    EXPECT_EQ("", traced({noAnswer(1000)}));
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              traced({sent(1250000, READ_REQUEST), received(1256120, REFUSAL), noAnswer(1752000)}));
    EXPECT_EQ(std::string(REQUEST_LINE) + "1 frames missed: the output was blocked\n",
              tracedTo([](FrameTrace& trace) {
                  trace.add(sent(1250000, READ_REQUEST));
                  trace.addHole(1);
                  trace.add(noAnswer(1752000));
              }));
}

TEST(FrameTrace, WritesDatesOnRequest)
{
    const std::string lines = printed([](std::FILE* out) {
        FrameTrace trace(out, TimeText(TimeText::ISO, 1700000000000000)); // 2023-11-14T22:13:20Z
        trace.add(sent(1250000, BROADCAST));
    });
    EXPECT_EQ("2023-11-14T22:13:21.250Z > 00 06 0B B9 04 D2 D9 47  broadcast: write register 3001 "
              "= 1234\n",
              lines);
}

TEST(FrameTrace, ReportsAHoleInItsPlace)
{
    const std::string lines = tracedTo([](FrameTrace& trace) {
        trace.add(sent(1250000, READ_REQUEST));
        trace.add(received(1256120, READ_REPLY.left(7)));
        trace.addHole(42);
        trace.add(received(2000000, REFUSAL)); // answers a missing request
        trace.add(sent(3250000, READ_REQUEST));
    });
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78  stray: 7 bytes of a reply of 9\n"
                  "42 frames missed: the output was blocked\n"
                  "    2.000000 < 01 83 02 C0 F1  stray: station 1: exception 2: illegal address, "
                  "not the answer\n"
                  "    3.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers "
                  "from 3000\n",
              lines);
}

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
