#include "linePacing.h"

#include <gtest/gtest.h>

namespace {

const std::int64_t MS = 1000000;

LineSettings at(int baud)
{
    LineSettings settings;
    settings.baud = baud;
    return settings;
}

Request request(std::size_t bytes, std::int64_t firstByteAt, std::int64_t lastByteAt)
{
    Request made;
    made.bytes.resize(bytes);
    made.firstByteAt = firstByteAt;
    made.lastByteAt = lastByteAt;
    return made;
}

} // namespace

TEST(LinePacing, ByteTimeIsTenBitsRoundedUp)
{
    EXPECT_EQ(1041667, LinePacing(at(9600)).pacedTime(1));  // 1 / 960 s
    EXPECT_EQ(8333334, LinePacing(at(9600)).pacedTime(8));  // 1 / 120 s
    EXPECT_EQ(2083334, LinePacing(at(38400)).pacedTime(8)); // 1 / 480 s
    EXPECT_EQ(0, LinePacing(at(0)).pacedTime(8));
}

TEST(LinePacing, RequestReadAtOnceEndsAfterItsWireTime)
{
    EXPECT_EQ(100 * MS + 8333334,
              LinePacing(at(9600)).requestEnd(request(8, 100 * MS, 100 * MS), 0));
    EXPECT_EQ(100 * MS, LinePacing(at(0)).requestEnd(request(8, 100 * MS, 100 * MS), 0));
}

TEST(LinePacing, SlowRequestEndsWithItsLastByte)
{
    EXPECT_EQ(120 * MS, LinePacing(at(9600)).requestEnd(request(8, 100 * MS, 120 * MS), 0));
}

TEST(LinePacing, RequestDoesNotOverlapThePreviousRequest)
{
    EXPECT_EQ(105 * MS + 8333334,
              LinePacing(at(9600)).requestEnd(request(8, 100 * MS, 100 * MS), 105 * MS));
}

TEST(LinePacing, ReplyStartsAfterTheTurnaround)
{
    LineSettings settings = at(38400);
    settings.turnaroundNs = 2 * MS;
    EXPECT_EQ(12 * MS, LinePacing(settings).replyStart(10 * MS));
}

TEST(LinePacing, WholeReplyIsDueAtItsEnd)
{
    const std::vector<OutgoingPiece> pieces = LinePacing(at(9600)).pieces(MS, Bytes(8, 0x55));
    ASSERT_EQ(1u, pieces.size());
    EXPECT_EQ(MS + 8333334, pieces[0].dueAt);
    EXPECT_EQ(Bytes(8, 0x55), pieces[0].bytes);
    EXPECT_TRUE(pieces[0].endsFrame);
}

TEST(LinePacing, TrickledBytesAreDueAtTheirOwnEnds)
{
    LineSettings settings = at(9600);
    settings.byteByByte = true;
    const std::vector<OutgoingPiece> pieces = LinePacing(settings).pieces(MS, {1, 2, 3});
    ASSERT_EQ(3u, pieces.size());
    const std::int64_t due[] = {MS + 1041667, MS + 2083334, MS + 3125000};
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        EXPECT_EQ(due[i], pieces[i].dueAt) << i;
        EXPECT_EQ(Bytes{static_cast<std::uint8_t>(i + 1)}, pieces[i].bytes) << i;
        EXPECT_EQ(i == 2, pieces[i].endsFrame) << i;
    }
}

TEST(LinePacing, SerialPortIsNotPaced)
{
    LineSettings settings = at(9600);
    settings.isSerialPort = true;
    const LinePacing port(settings);
    EXPECT_EQ(MS, port.requestEnd(request(8, 0, MS), 0));
    EXPECT_EQ(MS, port.pieces(MS, Bytes(8)).at(0).dueAt);
    EXPECT_EQ(8333334, port.timeAfterWrite(8));
    EXPECT_EQ(0, LinePacing(at(9600)).timeAfterWrite(8));
}

TEST(LinePacing, NetworkSilenceThatEndsAFrameIs100Ms)
{
    LineSettings settings = at(38400);
    settings.isNetwork = true;
    EXPECT_EQ(100 * MS, LinePacing(settings).endOfFrameSilence());
}

TEST(LinePacing, SilenceThatEndsAFrameIs3HalfCharactersButAtLeast5Ms)
{
    EXPECT_EQ(5 * MS, LinePacing(at(0)).endOfFrameSilence());
    EXPECT_EQ(5 * MS, LinePacing(at(38400)).endOfFrameSilence());
    EXPECT_EQ(29166667, LinePacing(at(1200)).endOfFrameSilence()); // 35 / 1200 s
}
