#include "exchange/longerRead.h"

#include "orderlyPeer.h"

#include <gtest/gtest.h>

// The device's areas: inputs (function 4) and outputs (function 3) are registers 0 to 255, markers
// (function 3) are 3000 to 7095. A request asks for 125 registers at most (MODBUS Application
// Protocol V1.1b3, 6.3).

namespace {

enum { OUTPUTS = 3, INPUTS = 4, MARKERS = 3, MOST = 125 };

QByteArray read(int function, int first, int count)
{
    QByteArray bytes(1, '\x01');
    bytes.append(static_cast<char>(function));
    putWord(bytes, first);
    putWord(bytes, count);
    return frameWith(bytes);
}

/// The reply of a station whose register n holds n.
QByteArray replyOf(int function, int first, int count)
{
    QByteArray bytes(1, '\x01');
    bytes.append(static_cast<char>(function)).append(static_cast<char>(2 * count));
    for (int i = 0; i < count; ++i)
        putWord(bytes, first + i);
    return frameWith(bytes);
}

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

} // namespace

TEST(LongerRead, TakesOneRegisterBehind)
{
    EXPECT_EQ(read(MARKERS, 3000, 3), longerRead(read(MARKERS, 3000, 2)));
    EXPECT_EQ(read(OUTPUTS, 0, 2), longerRead(read(OUTPUTS, 0, 1)));
    EXPECT_EQ(read(INPUTS, 100, 11), longerRead(read(INPUTS, 100, 10)));
}

TEST(LongerRead, TakesTheRegisterAheadAtTheEndOfItsArea)
{
    EXPECT_EQ(read(OUTPUTS, 254, 2), longerRead(read(OUTPUTS, 255, 1)));
    EXPECT_EQ(read(INPUTS, 249, 7), longerRead(read(INPUTS, 250, 6)));
    EXPECT_EQ(read(MARKERS, 7094, 2), longerRead(read(MARKERS, 7095, 1)));
    EXPECT_EQ(read(MARKERS, 6971, MOST), longerRead(read(MARKERS, 6972, 124)));
}

TEST(LongerRead, MayReachTheLastRegister)
{
    EXPECT_EQ(read(OUTPUTS, 254, 2), longerRead(read(OUTPUTS, 254, 1)));
    EXPECT_EQ(read(MARKERS, 7090, 6), longerRead(read(MARKERS, 7090, 5)));
}

TEST(LongerRead, NeverLeavesItsArea)
{
    for (int count = 1; count < MOST; ++count) {
        for (int first = 0; first + count <= 256; ++first) {
            const QByteArray longer = longerRead(read(INPUTS, first, count));
            ASSERT_EQ(count + 1, wordOf(longer, 4)) << first << ' ' << count;
            ASSERT_LE(wordOf(longer, 2) + count + 1, 256) << first << ' ' << count;
        }
        for (int first = 7096 - MOST - 1; first + count <= 7096; ++first) {
            const QByteArray longer = longerRead(read(MARKERS, first, count));
            ASSERT_EQ(count + 1, wordOf(longer, 4)) << first << ' ' << count;
            ASSERT_LE(wordOf(longer, 2) + count + 1, 7096) << first << ' ' << count;
        }
    }
}

TEST(LongerRead, IsEmptyFor125Registers)
{
    EXPECT_TRUE(longerRead(read(MARKERS, 3000, MOST)).isEmpty());
    EXPECT_FALSE(longerRead(read(MARKERS, 3000, MOST - 1)).isEmpty());
}

TEST(LongerRead, IsEmptyForNoRegisters)
{
    EXPECT_TRUE(longerRead(read(MARKERS, 3000, 0)).isEmpty());
}

TEST(LongerRead, IsEmptyOutsideTheAreas)
{
    EXPECT_TRUE(longerRead(read(OUTPUTS, 256, 1)).isEmpty());
    EXPECT_TRUE(longerRead(read(OUTPUTS, 2999, 1)).isEmpty());
    EXPECT_TRUE(longerRead(read(INPUTS, 3000, 1)).isEmpty());
    EXPECT_TRUE(longerRead(read(MARKERS, 7096, 1)).isEmpty());
    EXPECT_TRUE(longerRead(read(MARKERS, 7090, 10)).isEmpty());
}

TEST(LongerRead, IsEmptyForAWrite)
{
    for (const char* write : {"010500ACFF00", "01060BB904D2", "010F0013000A02CD01"})
        EXPECT_TRUE(longerRead(frameWith(fromHex(write))).isEmpty()) << write;
}

TEST(CutReply, KeepsTheReplyToTheRequestItself)
{
    const QByteArray reply = replyOf(MARKERS, 3000, 2);
    const QByteArray request = read(MARKERS, 3000, 2);
    EXPECT_EQ(reply, cutReply(reply, request, request));
}

TEST(CutReply, DropsTheRegisterBehind)
{
    EXPECT_EQ(replyOf(MARKERS, 3000, 2),
              cutReply(replyOf(MARKERS, 3000, 3), read(MARKERS, 3000, 3), read(MARKERS, 3000, 2)));
}

TEST(CutReply, DropsTheRegisterAhead)
{
    EXPECT_EQ(replyOf(INPUTS, 255, 1),
              cutReply(replyOf(INPUTS, 254, 2), read(INPUTS, 254, 2), read(INPUTS, 255, 1)));
    EXPECT_EQ(
        replyOf(MARKERS, 6972, 124),
        cutReply(replyOf(MARKERS, 6971, 125), read(MARKERS, 6971, 125), read(MARKERS, 6972, 124)));
}

TEST(CutReply, KeepsARefusal)
{
    const QByteArray refusal = fromHex("018302C0F1");
    EXPECT_EQ(refusal, cutReply(refusal, read(MARKERS, 3000, 3), read(MARKERS, 3000, 2)));
}

TEST(CutReply, EqualsTheReplyToTheRequestInEveryPlace)
{
    for (int count = 1; count < MOST; ++count) {
        for (int first : {0, 256 - count}) {
            const QByteArray request = read(INPUTS, first, count);
            const QByteArray sent = longerRead(request);
            const QByteArray reply = replyOf(INPUTS, wordOf(sent, 2), count + 1);
            ASSERT_EQ(replyOf(INPUTS, first, count), cutReply(reply, sent, request)) << count;
        }
    }
}

TEST(AreaStart, IsTheFirstRegisterOfTheRegistersArea)
{
    EXPECT_EQ(0, areaStart(INPUTS, 255));
    EXPECT_EQ(0, areaStart(INPUTS, 3000));
    EXPECT_EQ(0, areaStart(OUTPUTS, 0));
    EXPECT_EQ(0, areaStart(OUTPUTS, 2999));
    EXPECT_EQ(3000, areaStart(MARKERS, 3000));
    EXPECT_EQ(3000, areaStart(MARKERS, 7095));
}
