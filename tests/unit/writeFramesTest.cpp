#include "builtRequests.h"

#include <climits>

class WriteFrames : public DriverTest
{
};

namespace {

struct WriteRow
{
    VARIABLE written;
    std::string request;
};

void expectWritten(const std::vector<WriteRow>& rows)
{
    for (const WriteRow& row : rows)
        EXPECT_EQ(row.request, hex(writeRequestFor(row.written)));
}

} // namespace

// Requests named by a section are the examples of MODBUS Application Protocol V1.1b3, for station
// 17; they and the others without withChecksum() were made by pymodbus 3.0's RTU framer.

TEST_F(WriteFrames, WordsAreFunctionSixAndSixteen)
{
    expectWritten({
        {variable(17, "QW", 1, 1, {3, 0}), "11 06 00 01 00 03 9A 9B"}, // 6.6
        {variable(17, "MW", 3050, 1, {0x34, 0x12}), "11 06 0B EA 12 34 A5 FD"},
        {variable(17, "QW", 1, 2, {0x0A, 0, 2, 1}),
         "11 10 00 01 00 02 04 00 0A 01 02 C6 F0"}, // 6.12
        {variable(17, "MW", 3050, 3, {0x34, 0x12, 0xCD, 0xAB, 7, 0}),
         "11 10 0B EA 00 03 06 12 34 AB CD 00 07 9B ED"},
        {variable(17, "IW", 1, 1, {3, 0}), "11 06 00 01 00 03 9A 9B"}, // inputs like outputs
    });
}

TEST_F(WriteFrames, BitsAreFunctionFiveAndFifteenByTheirRawNumber)
{
    expectWritten({
        {variable(17, "QX", 172, 1, {1}), "11 05 00 AC FF 00 4E 8B"}, // 6.5
        {variable(17, "QX", 172, 1, {0}), "11 05 00 AC 00 00 0F 7B"},
        {variable(17, "QX", 19, 10, {1, 0, 1, 1, 0, 0, 1, 1, 1, 0}),
         "11 0F 00 13 00 0A 02 CD 01 BF 0B"}, // 6.11
        {variable(2, "QX", 5, 2, {1, 0}), "02 0F 00 05 00 02 01 01 93 42"},
        {variable(17, "MX", 3020, 1, {1}), "11 05 0B CC FF 00 4C B1"},
        {variable(17, "IX", 172, 1, {1}), "11 05 00 AC FF 00 4E 8B"}, // inputs like outputs
        // Unknown areas are written as bits.
        {variable(17, "XX", 172, 1, {1}), "11 05 00 AC FF 00 4E 8B"},
        {variable(17, "mw", 172, 1, {1}), "11 05 00 AC FF 00 4E 8B"},
        {variable(2, "", 5, 2, {1, 0}), "02 0F 00 05 00 02 01 01 93 42"},
    });
}

TEST_F(WriteFrames, OneBitIsSetByTheValueOneAlone)
{
    expectWritten({
        {variable(17, "QX", 172, 1, {2}), "11 05 00 AC 00 00 0F 7B"},
        {variable(17, "QX", 172, 1, {0xFF}), "11 05 00 AC 00 00 0F 7B"},
        {variable(17, "QX", 172, 1, {0, 1}), "11 05 00 AC 00 00 0F 7B"},
    });
}

TEST_F(WriteFrames, BitsPastTheCountAreNotPacked)
{
    VARIABLE written = variable(2, "MX", 3020, 9);
    std::memset(written.value, 1, sizeof written.value);
    EXPECT_EQ("02 0F 0B CC 00 09 02 FF 01 DA B0", hex(writeRequestFor(written)));
}

TEST_F(WriteFrames, PackedBitsAreAddedSoOtherValuesSpillOver)
{
    expectWritten({
        // 2 + (1 << 1) = 4, where an OR would give 2
        {variable(1, "QX", 0, 2, {2, 1}), hex(withChecksum({1, 15, 0, 0, 0, 2, 1, 4}))},
        // 0xFF + (0xFF << 1) = 0x2FD, kept modulo 256
        {variable(1, "QX", 0, 2, {0xFF, 0xFF}), hex(withChecksum({1, 15, 0, 0, 0, 2, 1, 0xFD}))},
        // 3 << 7 = 0x180; nothing spills into the next byte
        {variable(1, "QX", 0, 9, {0, 0, 0, 0, 0, 0, 0, 3, 0}),
         hex(withChecksum({1, 15, 0, 0, 0, 9, 2, 0x80, 0}))},
    });
}

TEST_F(WriteFrames, EveryWriteExpectsTheEightByteEcho)
{
    for (const char* area : {"MW", "QX"}) {
        for (int count : {0, 1, 2, 20}) {
            SCOPED_TRACE(std::string(area) + " count " + std::to_string(count));
            const FRAME_PRO frame = writeRequestFor(variable(1, area, 3000, count));
            EXPECT_EQ(8, frame.recvLen);
            EXPECT_EQ(0, frame.dataStart);
            EXPECT_EQ(0, frame.itemCount);
        }
    }
}

TEST_F(WriteFrames, BroadcastIsBuiltNormallyAndExpectsNoReply)
{
    EXPECT_EQ("00 06 00 01 00 03 99 DA", hex(writeRequestFor(variable(0, "QW", 1, 1, {3, 0}))));
    for (const char* area : {"MW", "QX"}) {
        for (int count : {1, 2}) {
            const FRAME_PRO frame = writeRequestFor(variable(0, area, 3000, count));
            EXPECT_GT(frame.sendLen, 0);
            EXPECT_EQ(0, frame.recvLen);
            EXPECT_EQ(0, frame.dataStart);
            EXPECT_EQ(0, frame.itemCount);
        }
    }
}

TEST_F(WriteFrames, OnlyTheLowByteOfTheStationIsSent)
{
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", hex(writeRequestFor(variable(0x311, "QW", 1, 1, {3, 0}))));
    const FRAME_PRO frame = writeRequestFor(variable(256, "QW", 1, 1, {3, 0}));
    EXPECT_EQ("00 06 00 01 00 03 99 DA", hex(frame));
    EXPECT_EQ(8, frame.recvLen);
}

TEST_F(WriteFrames, AddressIsCutToTwoBytes)
{
    expectWritten({
        {variable(17, "QW", 65537, 1, {3, 0}), "11 06 00 01 00 03 9A 9B"},
        {variable(17, "QW", -2, 1, {3, 0}), hex(withChecksum({17, 6, 0xFF, 0xFE, 0, 3}))},
        {variable(17, "QW", INT_MIN, 1, {3, 0}), hex(withChecksum({17, 6, 0, 0, 0, 3}))},
    });
}

TEST_F(WriteFrames, FrameCarriesTheVariableAsItWasHandedIn)
{
    VARIABLE written = variable(5, "MX", 3020, 20, {1, 0, 1});
    written.varId = 77;
    written.value[1023] = 9;
    expectSameVariable(written, writeRequestFor(written).var);
}

TEST_F(WriteFrames, FramesQueueUpBehindThoseBefore)
{
    getWriteFrame(variable(17, "QW", 1, 1, {3, 0}));
    getWriteFrame(variable(17, "QX", 172, 1, {1}));
    ASSERT_EQ(2, int(driver.frameQueue.size()));
    EXPECT_EQ("11 06 00 01 00 03 9A 9B", hex(driver.frameQueue.at(0)));
    EXPECT_EQ("11 05 00 AC FF 00 4E 8B", hex(driver.frameQueue.at(1)));
}

TEST_F(WriteFrames, HandshakePlaceholderIsEmptyAndQueuesUpBehindThoseBefore)
{
    getWriteFrame(variable(17, "QW", 1, 1, {3, 0}));
    handShakeFrame();
    ASSERT_EQ(2, int(driver.frameQueue.size()));
    EXPECT_EQ(8, driver.frameQueue.at(0).sendLen);
    const FRAME_PRO& frame = driver.frameQueue.at(1);
    EXPECT_EQ(0, frame.sendLen);
    EXPECT_EQ(0, frame.recvLen);
    EXPECT_EQ(0, frame.dataStart);
    EXPECT_EQ(0, frame.itemCount);
    EXPECT_TRUE(frame.var.regName.isEmpty());
}
