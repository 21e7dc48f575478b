#include "driverFixture.h"
#include "requestFrames.h"

#include <climits>
#include <cstring>

class WriteFrames : public DriverTest
{
};

namespace {

FRAME_PRO requestFor(const VARIABLE& written)
{
    driver.frameQueue.clear();
    getWriteFrame(written);
    EXPECT_EQ(1, int(driver.frameQueue.size()));
    return driver.frameQueue.isEmpty() ? FRAME_PRO() : driver.frameQueue.at(0);
}

std::string request(const VARIABLE& written)
{
    return hex(requestFor(written));
}

} // namespace

// Requests named by a section are the examples of MODBUS Application Protocol V1.1b3, for station
// 17; they and the others without withChecksum() were made by pymodbus 3.0's RTU framer.

TEST_F(WriteFrames, OneWordIsFunctionSix)
{
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", request(variable(17, "QW", 1, 1, {3, 0}))); // 6.6
    EXPECT_EQ("11 06 0B EA 12 34 A5 FD", request(variable(17, "MW", 3050, 1, {0x34, 0x12})));
}

TEST_F(WriteFrames, TwoWordsAndMoreAreFunctionSixteen)
{
    EXPECT_EQ("11 10 00 01 00 02 04 00 0A 01 02 C6 F0",
              request(variable(17, "QW", 1, 2, {0x0A, 0, 2, 1}))); // 6.12
    EXPECT_EQ("11 10 0B EA 00 03 06 12 34 AB CD 00 07 9B ED",
              request(variable(17, "MW", 3050, 3, {0x34, 0x12, 0xCD, 0xAB, 7, 0})));
}

TEST_F(WriteFrames, OneBitIsFunctionFive)
{
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", request(variable(17, "QX", 172, 1, {1}))); // 6.5
    EXPECT_EQ("11 05 00 AC 00 00 0F 7B", request(variable(17, "QX", 172, 1, {0})));
}

TEST_F(WriteFrames, OneBitIsSetByTheValueOneAlone)
{
    EXPECT_EQ("11 05 00 AC 00 00 0F 7B", request(variable(17, "QX", 172, 1, {2})));
    EXPECT_EQ("11 05 00 AC 00 00 0F 7B", request(variable(17, "QX", 172, 1, {0xFF})));
    EXPECT_EQ("11 05 00 AC 00 00 0F 7B", request(variable(17, "QX", 172, 1, {0, 1})));
}

TEST_F(WriteFrames, TwoBitsAndMoreAreFunctionFifteen)
{
    EXPECT_EQ("11 0F 00 13 00 0A 02 CD 01 BF 0B",
              request(variable(17, "QX", 19, 10, {1, 0, 1, 1, 0, 0, 1, 1, 1, 0}))); // 6.11
    EXPECT_EQ("02 0F 00 05 00 02 01 01 93 42", request(variable(2, "QX", 5, 2, {1, 0})));
}

TEST_F(WriteFrames, BitsAreWrittenByTheirRawNumber)
{
    EXPECT_EQ("11 05 0B CC FF 00 4C B1", request(variable(17, "MX", 3020, 1, {1})));
    EXPECT_EQ("02 0F 0B CC 00 09 02 FF 01 DA B0",
              request(variable(2, "MX", 3020, 9, {1, 1, 1, 1, 1, 1, 1, 1, 1})));
}

TEST_F(WriteFrames, LastByteIsFullWhenTheCountIsAMultipleOfEight)
{
    VARIABLE written = variable(2, "MX", 3020, 16);
    std::memset(written.value, 1, 16);
    EXPECT_EQ("02 0F 0B CC 00 10 02 FF FF 5C 6C", request(written));
}

TEST_F(WriteFrames, BitsPastTheCountAreNotPacked)
{
    VARIABLE written = variable(2, "MX", 3020, 9);
    std::memset(written.value, 1, sizeof written.value);
    EXPECT_EQ("02 0F 0B CC 00 09 02 FF 01 DA B0", request(written));
}

TEST_F(WriteFrames, PackedBitsAreAddedSoOtherValuesSpillOver)
{
    // 2 + (1 << 1) = 4, where an OR would give 2
    EXPECT_EQ(hex(withChecksum({1, 15, 0, 0, 0, 2, 1, 4})),
              request(variable(1, "QX", 0, 2, {2, 1})));
    // 0xFF + (0xFF << 1) = 0x2FD, kept modulo 256
    EXPECT_EQ(hex(withChecksum({1, 15, 0, 0, 0, 2, 1, 0xFD})),
              request(variable(1, "QX", 0, 2, {0xFF, 0xFF})));
    // 3 << 7 = 0x180; nothing spills into the next byte
    EXPECT_EQ(hex(withChecksum({1, 15, 0, 0, 0, 9, 2, 0x80, 0})),
              request(variable(1, "QX", 0, 9, {0, 0, 0, 0, 0, 0, 0, 3, 0})));
}

TEST_F(WriteFrames, UnknownAreaIsWrittenAsBits)
{
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", request(variable(17, "XX", 172, 1, {1})));
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", request(variable(17, "mw", 172, 1, {1})));
    EXPECT_EQ("02 0F 00 05 00 02 01 01 93 42", request(variable(2, "", 5, 2, {1, 0})));
}

TEST_F(WriteFrames, InputsAreWrittenLikeOutputs)
{
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", request(variable(17, "IW", 1, 1, {3, 0})));
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", request(variable(17, "IX", 172, 1, {1})));
}

TEST_F(WriteFrames, EveryWriteExpectsTheEightByteEcho)
{
    for (const char* area : {"MW", "QX"}) {
        for (int count : {0, 1, 2, 20}) {
            SCOPED_TRACE(std::string(area) + " count " + std::to_string(count));
            const FRAME_PRO frame = requestFor(variable(1, area, 3000, count));
            EXPECT_EQ(8, frame.recvLen);
            EXPECT_EQ(0, frame.dataStart);
            EXPECT_EQ(0, frame.itemCount);
        }
    }
}

TEST_F(WriteFrames, BroadcastIsBuiltNormallyAndExpectsNoReply)
{
    EXPECT_EQ("00 06 00 01 00 03 99 DA", request(variable(0, "QW", 1, 1, {3, 0})));
    for (const char* area : {"MW", "QX"}) {
        for (int count : {1, 2}) {
            const FRAME_PRO frame = requestFor(variable(0, area, 3000, count));
            EXPECT_GT(frame.sendLen, 0);
            EXPECT_EQ(0, frame.recvLen);
            EXPECT_EQ(0, frame.dataStart);
            EXPECT_EQ(0, frame.itemCount);
        }
    }
}

TEST_F(WriteFrames, OnlyTheLowByteOfTheStationIsSent)
{
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", request(variable(0x311, "QW", 1, 1, {3, 0})));
    const FRAME_PRO frame = requestFor(variable(256, "QW", 1, 1, {3, 0}));
    EXPECT_EQ("00 06 00 01 00 03 99 DA", hex(frame));
    EXPECT_EQ(8, frame.recvLen);
}

TEST_F(WriteFrames, AddressIsCutToTwoBytes)
{
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", request(variable(17, "QW", 65537, 1, {3, 0})));
    EXPECT_EQ(hex(withChecksum({17, 6, 0xFF, 0xFE, 0, 3})),
              request(variable(17, "QW", -2, 1, {3, 0})));
    EXPECT_EQ(hex(withChecksum({17, 6, 0, 0, 0, 3})),
              request(variable(17, "QW", INT_MIN, 1, {3, 0})));
}

TEST_F(WriteFrames, FrameCarriesTheVariableAsItWasHandedIn)
{
    VARIABLE written = variable(5, "MX", 3020, 20, {1, 0, 1});
    written.varId = 77;
    written.value[1023] = 9;
    const FRAME_PRO frame = requestFor(written);
    EXPECT_EQ(77, frame.var.varId);
    EXPECT_EQ(5, frame.var.station);
    EXPECT_EQ("MX", frame.var.regName.toStdString());
    EXPECT_EQ(3020, frame.var.addr);
    EXPECT_EQ(20, frame.var.count);
    EXPECT_EQ(0, std::memcmp(written.value, frame.var.value, sizeof written.value));
}

TEST_F(WriteFrames, FramesQueueUpBehindThoseBefore)
{
    getWriteFrame(variable(17, "QW", 1, 1, {3, 0}));
    getWriteFrame(variable(17, "QX", 172, 1, {1}));
    ASSERT_EQ(2, int(driver.frameQueue.size()));
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", hex(driver.frameQueue.at(0)));
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", hex(driver.frameQueue.at(1)));
}

TEST_F(WriteFrames, HandshakePlaceholderIsEmpty)
{
    handShakeFrame();
    ASSERT_EQ(1, int(driver.frameQueue.size()));
    const FRAME_PRO frame = driver.frameQueue.at(0);
    EXPECT_EQ(0, frame.sendLen);
    EXPECT_EQ(0, frame.recvLen);
    EXPECT_EQ(0, frame.dataStart);
    EXPECT_EQ(0, frame.itemCount);
    EXPECT_TRUE(frame.var.regName.isEmpty());
}

TEST_F(WriteFrames, HandshakePlaceholderQueuesUpBehindThoseBefore)
{
    getWriteFrame(variable(17, "QW", 1, 1, {3, 0}));
    handShakeFrame();
    ASSERT_EQ(2, int(driver.frameQueue.size()));
    EXPECT_EQ(8, driver.frameQueue.at(0).sendLen);
    EXPECT_EQ(0, driver.frameQueue.at(1).sendLen);
}
