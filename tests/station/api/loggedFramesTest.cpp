#include "api/loggedFrames.h"

#include "api/frameDocument.h"
#include "frameRecords.h"

#include <gtest/gtest.h>

namespace {

const qint64 TIME = 1700000000123;

QByteArray documentOf(const GatheredFrame& frame)
{
    JsonText json;
    appendFrame(json, frame);
    return json.document();
}

} // namespace

TEST(LoggedFrames, AreToldWithTimeDirectionBytesAndMeaning)
{
    FrameLog log;
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    log.add(TIME + 5, FrameRecord::RECEIVED, READ_REPLY.left(3));
    log.add(TIME + 6, FrameRecord::RECEIVED, READ_REPLY.mid(3));
    const std::vector<GatheredFrame> frames = gatheredFrames(log);
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(R"({"time":1700000000123,"direction":">","hex":"01 03 0B B8 00 02 46 0A",)"
              R"("meaning":"station 1: read 2 holding registers from 3000"})",
              documentOf(frames[0]));
    EXPECT_EQ(R"({"time":1700000000128,"direction":"<","hex":"01 03 04 12 34 56 78 81 07",)"
              R"("meaning":"station 1: 2 registers 0x1234 0x5678"})",
              documentOf(frames[1]));
}

TEST(LoggedFrames, LeaveOutAReplyWhoseRequestIsGone)
{
    FrameLog log;
    for (int i = 0; i < FrameLog::MOST_FRAMES / 2; ++i) {
        log.add(TIME, FrameRecord::SENT, READ_REQUEST);
        log.add(TIME, FrameRecord::RECEIVED, READ_REPLY);
    }
    EXPECT_EQ(size_t(FrameLog::MOST_FRAMES), gatheredFrames(log).size());
    log.add(TIME, FrameRecord::SENT, READ_REQUEST); // the oldest request goes
    const std::vector<GatheredFrame> frames = gatheredFrames(log);
    ASSERT_EQ(size_t(FrameLog::MOST_FRAMES) - 1, frames.size());
    EXPECT_EQ(GatheredFrame::REQUEST, frames.front().kind);
}

TEST(LoggedFrames, LeaveOutAnAnswerThatIsStillComing)
{
    FrameLog log;
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    log.add(TIME, FrameRecord::RECEIVED, READ_REPLY.left(3));
    EXPECT_EQ(1u, gatheredFrames(log).size());
}

// pcap-savefile(5).
TEST(LoggedFrames, BecomeACaptureOfRawIp)
{
    EXPECT_EQ(QByteArray::fromHex("d4c3b2a1 0200 0400 00000000 00000000 ffff0000 65000000"),
              captureOf({}));
}

TEST(LoggedFrames, BecomePacketsWithTheirTimes)
{
    FrameLog log;
    log.add(TIME, FrameRecord::SENT, READ_REQUEST);
    const QByteArray packets = captureOf(gatheredFrames(log)).mid(24);
    ASSERT_EQ(16 + 36, packets.size()); // IPv4 20, UDP 8, the frame 8
    // 1700000000 s is 0x6553F100, 123000 us is 0x1E078, 36 bytes
    EXPECT_EQ(QByteArray::fromHex("00f15365 78e00100 24000000 24000000"), packets.left(16));
    EXPECT_TRUE(packets.endsWith(READ_REQUEST));
}
