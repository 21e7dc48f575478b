#include "wire/frameShape.h"

#include "orderlyPeer.h"

#include <gtest/gtest.h>

#include <random>

// Known checksums: the check value of this CRC over "123456789" is 4B37; 02 07 has 1241 (MODBUS
// over Serial Line V1.02, 6.2.2); the others are by pymodbus' computeCRC.

namespace {

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

const char* const KNOWN_FRAMES[] = {
    "313233343536373839374B", "02074112",   "01030BB80002460A", "010304123456788107",
    "01060BB904D2D896",       "018302C0F1", "00060BB904D2D947"};

} // namespace

TEST(FrameShape, KnownFrameHasTheRightChecksum)
{
    for (const char* frame : KNOWN_FRAMES)
        EXPECT_TRUE(hasRightChecksum(fromHex(frame))) << frame;
}

TEST(FrameShape, FrameIsItsBytesAndTheKnownChecksum)
{
    for (const char* text : KNOWN_FRAMES) {
        const QByteArray frame = fromHex(text);
        EXPECT_EQ(frame, withChecksum(frame.left(frame.size() - 2))) << text;
    }
}

TEST(FrameShape, ChecksumEqualsTheBitByBitMethod)
{
    std::mt19937 random(3);
    for (int length = 1; length <= 254; ++length) {
        QByteArray bytes;
        for (int i = 0; i < length; ++i)
            bytes.append(static_cast<char>(random() & 0xFFu));
        ASSERT_EQ(frameWith(bytes), withChecksum(bytes)) << length;
    }
}

TEST(FrameShape, AnyFlippedBitMakesTheChecksumWrong)
{
    const QByteArray frame = fromHex("010304123456788107");
    for (int bit = 0; bit < 8 * frame.size(); ++bit) {
        QByteArray flipped = frame;
        flipped[bit / 8] = static_cast<char>(byteOf(frame, bit / 8) ^ 1 << bit % 8);
        EXPECT_FALSE(hasRightChecksum(flipped)) << bit;
    }
}

TEST(FrameShape, SwappedChecksumBytesAreWrong)
{
    EXPECT_FALSE(hasRightChecksum(fromHex("01030BB800020A46")));
}

TEST(FrameShape, TooShortFramesHaveNoChecksum)
{
    EXPECT_FALSE(hasRightChecksum(QByteArray()));
    EXPECT_FALSE(hasRightChecksum(fromHex("FFFF"))); // the checksum of no bytes
    EXPECT_FALSE(hasRightChecksum(frameWith(fromHex("01"))));
}

TEST(FrameShape, BytesAndWordsAreUnsigned)
{
    const QByteArray frame = fromHex("80FFFE01");
    EXPECT_EQ(0x80, frameByte(frame, 0));
    EXPECT_EQ(0xFF, frameByte(frame, 1));
    EXPECT_EQ(0xFFFE, frameWord(frame, 1));
    EXPECT_EQ(0xFE01, frameWord(frame, 2));
}

TEST(FrameShape, ReadRequestHasItsFieldsInOrder)
{
    EXPECT_EQ(fromHex("01030BB80002460A"), readRequest(1, READ_HOLDING, 3000, 2));
    EXPECT_EQ(frameWith(fromHex("F704FFFE007D")), readRequest(247, READ_INPUT, 65534, 125));
}

TEST(FrameShape, OnlyFunctions3And4AreReads)
{
    for (int function = 0; function < 256; ++function) {
        QByteArray frame = fromHex("01000BB80002");
        frame[1] = static_cast<char>(function);
        EXPECT_EQ(function == 3 || function == 4, isRead(frameWith(frame))) << function;
    }
}

TEST(FrameShape, ReadReplyHasFiveBytesAndTwoForEachRegister)
{
    for (int registers = 1; registers <= 125; ++registers) {
        EXPECT_EQ(2 * registers + 5, dueReplyLength(readRequest(1, READ_HOLDING, 0, registers)));
        EXPECT_EQ(2 * registers + 5, dueReplyLength(readRequest(1, READ_INPUT, 0, registers)));
    }
}

TEST(FrameShape, WriteReplyHasEightBytes)
{
    // MODBUS Application Protocol V1.1b3, 6.5, 6.6, 6.11 and 6.12.
    for (const char* request : {"010500ACFF00", "010600010003", "010F0013000A02CD01",
                                "0110000100020400"
                                "0A0102"})
        EXPECT_EQ(8, dueReplyLength(frameWith(fromHex(request)))) << request;
}

TEST(FrameShape, UnanswerableRequestHasReplyLengthZero)
{
    EXPECT_EQ(0, dueReplyLength(frameWith(fromHex("00060BB904D2")))); // a broadcast
    EXPECT_EQ(0, dueReplyLength(frameWith(fromHex("010100130013")))); // a function never sent
    EXPECT_EQ(0, dueReplyLength(fromHex("01030BB8000246")));          // a byte short
    EXPECT_EQ(0, dueReplyLength(QByteArray()));
}
