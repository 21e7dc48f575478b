#include "builtRequests.h"

#include <climits>

class WriteFrameLimits : public DriverTest
{
};

namespace {

std::string request(const VARIABLE& written)
{
    return hex(writeRequestFor(written));
}

VARIABLE rampOfWords(int count)
{
    VARIABLE made = variable(1, "MW", 3000, count);
    for (int i = 0; i < count && i < VALUE_BYTES / 2; ++i) {
        made.value[2 * i] = static_cast<unsigned char>(i % 251);
        made.value[2 * i + 1] = static_cast<unsigned char>((i + 1) % 256);
    }
    return made;
}

VARIABLE everyThirdBit(int count)
{
    VARIABLE made = variable(1, "MX", 3000, count);
    for (int i = 0; i < count && i < VALUE_BYTES; i += 3)
        made.value[i] = 1;
    return made;
}

/// First and last bytes of a long request.
std::string ends(const FRAME_PRO& frame, int first, int last)
{
    const std::string all = hex(frame);
    return all.substr(0, 3 * size_t(first)) + "… " + all.substr(all.size() + 1 - 3 * size_t(last));
}

void expectUnsendable(const FRAME_PRO& frame)
{
    EXPECT_EQ(0, frame.sendLen);
    EXPECT_EQ(1, frame.recvLen);
    EXPECT_EQ(0, frame.dataStart);
    EXPECT_EQ(0, frame.itemCount);
}

} // namespace

// Checksums of the long requests by pymodbus 3.0, computeCRC.

TEST_F(WriteFrameLimits, ByteCountOfWordsIsKeptModulo256)
{
    EXPECT_EQ("01 10 0B B8 00 7F FE 01 00 … 7F 7E E5 13",
              ends(writeRequestFor(rampOfWords(127)), 9, 4));
    EXPECT_EQ("01 10 0B B8 00 80 00 01 00 … 80 7F 67 36",
              ends(writeRequestFor(rampOfWords(128)), 9, 4));
}

TEST_F(WriteFrameLimits, LongestWordWriteFillsTheFrame)
{
    const FRAME_PRO frame = writeRequestFor(rampOfWords(507));
    EXPECT_EQ(1023, frame.sendLen);
    EXPECT_EQ("01 10 0B B8 01 FB F6 01 00 … FB 04 2E BB", ends(frame, 9, 4));
    EXPECT_EQ(8, frame.recvLen);
}

TEST_F(WriteFrameLimits, LongestBitWriteTakesTheWholeValue)
{
    EXPECT_EQ("01 0F 0B B8 03 FF 80 49 92 24 … 49 12 AA F6",
              ends(writeRequestFor(everyThirdBit(1023)), 10, 4));
    const FRAME_PRO frame = writeRequestFor(everyThirdBit(1024));
    EXPECT_EQ(137, frame.sendLen);
    EXPECT_EQ("01 0F 0B B8 04 00 80 49 92 24 … 49 92 30 41", ends(frame, 10, 4));
    EXPECT_EQ(8, frame.recvLen);
}

TEST_F(WriteFrameLimits, MoreThanFitsIsUnsendable)
{
    for (int count : {508, 512, 513, 1024, 65536, INT_MAX}) {
        SCOPED_TRACE(std::to_string(count) + " words");
        expectUnsendable(writeRequestFor(rampOfWords(count)));
    }
    EXPECT_EQ(137, writeRequestFor(variable(1, "XX", 3000, 1024)).sendLen);
    for (int count : {1025, 2048, 65536, INT_MAX}) {
        SCOPED_TRACE(std::to_string(count) + " bits");
        expectUnsendable(writeRequestFor(everyThirdBit(count)));
        expectUnsendable(writeRequestFor(variable(1, "XX", 3000, count)));
    }
}

TEST_F(WriteFrameLimits, BroadcastOfMoreThanFitsIsUnsendableToo)
{
    EXPECT_EQ(1023, writeRequestFor(variable(0, "MW", 3000, 507)).sendLen);
    expectUnsendable(writeRequestFor(variable(0, "MW", 3000, 508)));
    EXPECT_EQ(137, writeRequestFor(variable(0, "MX", 3000, 1024)).sendLen);
    expectUnsendable(writeRequestFor(variable(0, "MX", 3000, 1025)));
}

TEST_F(WriteFrameLimits, CountZeroHasNoDataBytes)
{
    EXPECT_EQ(hex(withChecksum({1, 16, 0x0B, 0xB8, 0, 0, 0})),
              request(variable(1, "MW", 3000, 0, {1, 2})));
    EXPECT_EQ(hex(withChecksum({1, 15, 0x0B, 0xB8, 0, 0, 0})),
              request(variable(1, "MX", 3000, 0, {1, 1})));
}

TEST_F(WriteFrameLimits, WordCountBelowZeroShortensTheFrame)
{
    // 2 * count + 9 bytes with the checksum over all before it
    EXPECT_EQ(hex(withChecksum({1, 16, 0x0B, 0xB8, 0xFF})),
              request(variable(1, "MW", 3000, -1, {1, 2})));
    EXPECT_EQ(hex(withChecksum({1, 16, 0x0B})), request(variable(1, "MW", 3000, -2, {1, 2})));
    EXPECT_EQ(hex(withChecksum({1})), request(variable(1, "MW", 3000, -3, {1, 2})));
}

TEST_F(WriteFrameLimits, BitCountBelowZeroShortensTheFrameByWholeBytes)
{
    // ceil(-7 / 8) is 0, ceil(-8 / 8) and ceil(-15 / 8) are -1
    EXPECT_EQ(hex(withChecksum({1, 15, 0x0B, 0xB8, 0xFF, 0xF9, 0})),
              request(variable(1, "MX", 3000, -7, {1, 1})));
    EXPECT_EQ(hex(withChecksum({1, 15, 0x0B, 0xB8, 0xFF, 0xF8})),
              request(variable(1, "MX", 3000, -8, {1, 1})));
    EXPECT_EQ(hex(withChecksum({1, 15, 0x0B, 0xB8, 0xFF, 0xF1})),
              request(variable(1, "MX", 3000, -15, {1, 1})));
    // 9 - 7 bytes hold the checksum of nothing
    EXPECT_EQ("FF FF", request(variable(1, "MX", 3000, -56, {1, 1})));
    EXPECT_EQ("FF FF", request(variable(1, "MX", 3000, -63, {1, 1})));
}

TEST_F(WriteFrameLimits, CountTooFarBelowZeroForAFrameIsUnsendable)
{
    for (int count : {-4, -5, -6, -100, -512, -513, -65536, INT_MIN}) {
        SCOPED_TRACE(std::to_string(count) + " words");
        expectUnsendable(writeRequestFor(variable(1, "MW", 3000, count)));
    }
    for (int count : {-64, -72, -80, -1024, -1025, -65536, INT_MIN}) {
        SCOPED_TRACE(std::to_string(count) + " bits");
        expectUnsendable(writeRequestFor(variable(1, "MX", 3000, count)));
    }
}

TEST_F(WriteFrameLimits, UnsendableFrameNamesItsVariable)
{
    const VARIABLE written = variable(3, "MW", 3005, 600, {1, 2});
    unsendableFrame(written);
    const FRAME_PRO frame = takeOnlyFrame();
    expectUnsendable(frame);
    expectSameVariable(written, frame.var);
}
