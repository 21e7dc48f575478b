#include "builtRequests.h"

#include <climits>

class ReadFrames : public DriverTest
{
};

namespace {

struct ReadRow
{
    const char* area;
    int station;
    int addr;
    int count;
    int replyBytes;
    const char* request;
};

void expectRead(const ReadRow& row)
{
    SCOPED_TRACE(std::string(row.area) + " " + std::to_string(row.addr) + " count " +
                 std::to_string(row.count));
    const FRAME_PRO frame = readRequestFor(variable(row.station, row.area, row.addr, row.count));
    EXPECT_EQ(row.request, hex(frame));
    EXPECT_EQ(8, frame.sendLen);
    EXPECT_EQ(row.replyBytes, frame.recvLen);
    EXPECT_EQ(3, frame.dataStart);
    EXPECT_EQ(row.count, frame.itemCount);
}

/// First register and number of registers of a bit read, as they are on the wire.
std::string registersOf(const char* area, int addr, int count)
{
    return hex(readRequestFor(variable(1, area, addr, count))).substr(6, 11);
}

} // namespace

TEST_F(ReadFrames, WordsAreReadByTheirOwnNumberAndBitsAsTheRegistersThatHoldThem)
{
    const ReadRow rows[] = {
        // MODBUS Application Protocol V1.1b3, 6.3 and 6.4, for station 17 and closed by pymodbus
        // 3.0's RTU framer; the others by that framer
        {"QW", 17, 107, 3, 11, "11 03 00 6B 00 03 76 87"},
        {"IW", 17, 8, 1, 7, "11 04 00 08 00 01 B2 98"},
        {"MW", 1, 3000, 1, 7, "01 03 0B B8 00 01 06 0B"},
        {"MW", 247, 7095, 125, 255, "F7 03 1B B7 00 7D 27 BF"},
        {"QW", 3, 255, 2, 9, "03 03 00 FF 00 02 F5 D9"},
        {"IW", 2, 255, 4, 13, "02 04 00 FF 00 04 C1 CA"},
        {"QW", 1, 65535, 1, 7, "01 03 FF FF 00 01 84 2E"},
        // functions 3 and 4 with the registers worked out by hand
        {"MX", 5, 3020, 20, 9, "05 03 0B B9 00 02 16 4E"},
        {"QX", 1, 15, 2, 9, "01 03 00 00 00 02 C4 0B"},
        {"QX", 1, 0, 16, 7, "01 03 00 00 00 01 84 0A"},
        {"QX", 9, 16, 17, 9, "09 03 00 01 00 02 94 83"},
        {"IX", 1, 3, 1, 7, "01 04 00 00 00 01 31 CA"},
        {"IX", 8, 4095, 1, 7, "08 04 00 FF 00 01 01 63"},
    };
    for (const ReadRow& row : rows)
        expectRead(row);
}

TEST_F(ReadFrames, FunctionIsFourForInputsAndThreeForAllElse)
{
    for (const char* area : {"IW", "IX"})
        EXPECT_EQ(4, readRequestFor(variable(1, area, 0, 1)).sendBuf[1]) << area;
    for (const char* area : {"MW", "QW", "MX", "QX", "XX", "", "iw", "ix"})
        EXPECT_EQ(3, readRequestFor(variable(1, area, 3000, 1)).sendBuf[1]) << area;
}

TEST_F(ReadFrames, BitBelowTheMarkerBaseIsTruncatedTowardZero)
{
    // (2990 - 3000) / 16 = 0 and remainder -10; (-10 + 4) / 16 = 0 and not whole: one register
    expectRead({"MX", 5, 2990, 4, 7, "05 03 0B B8 00 01 07 8F"}); // pymodbus 3.0's RTU framer
}

TEST_F(ReadFrames, RegistersOfBitsAreCountedByTruncatingDivision)
{
    EXPECT_EQ("0B B8 00 01", registersOf("MX", 3000, 1));
    EXPECT_EQ("0B B8 00 01", registersOf("MX", 3000, 16));
    EXPECT_EQ("0B B8 00 02", registersOf("MX", 3000, 17));
    EXPECT_EQ("0B B8 00 02", registersOf("MX", 3015, 17));
    EXPECT_EQ("0B B8 00 03", registersOf("MX", 3015, 18));
    EXPECT_EQ("0B B8 00 01", registersOf("MX", 3015, 1));
    EXPECT_EQ("0B B9 00 01", registersOf("MX", 3016, 1));
    EXPECT_EQ("00 00 00 01", registersOf("QX", 15, 1));
    EXPECT_EQ("00 01 00 01", registersOf("QX", 16, 1));
    EXPECT_EQ("00 00 00 01", registersOf("QX", -15, 1));   // remainder -15; -14 / 16 = 0, not whole
    EXPECT_EQ("FF FF 00 01", registersOf("QX", -16, 1));   // remainder 0
    EXPECT_EQ("1A FC 00 01", registersOf("MX", 65535, 1)); // 62535 / 16 = 3908, + 3000
    EXPECT_EQ("00 00 00 00", registersOf("QX", -1, 1));    // remainder -1, -1 + 1 = 0
    EXPECT_EQ("00 00 00 01", registersOf("IX", -15, 16));  // (-15 + 16) / 16 = 0, not whole
    EXPECT_EQ("FF FF 00 01", registersOf("QX", -17, 3));   // -17 / 16 = -1, remainder -1
    EXPECT_EQ("00 00 00 00", registersOf("QX", -15, -5));  // -20 / 16 = -1, + 1
    EXPECT_EQ("00 00 FF FF", registersOf("QX", 0, -16));
}

TEST_F(ReadFrames, UnknownAreaIsReadAsBitsWithoutABase)
{
    expectRead({"XX", 1, 20, 16, 9, hex(withChecksum({1, 3, 0, 1, 0, 2})).c_str()});
    expectRead({"", 1, 3020, 16, 9, hex(withChecksum({1, 3, 0, 188, 0, 2})).c_str()});
    expectRead({"mw", 1, 32, 1, 7, hex(withChecksum({1, 3, 0, 2, 0, 1})).c_str()});
}

TEST_F(ReadFrames, BroadcastIsBuiltNormallyAndExpectsNoReply)
{
    for (const char* area : {"QW", "QX"}) {
        const FRAME_PRO frame = readRequestFor(variable(0, area, 0, 1));
        EXPECT_EQ("00 03 00 00 00 01 85 DB", hex(frame)); // pymodbus 3.0's RTU framer
        EXPECT_EQ(8, frame.sendLen);
        EXPECT_EQ(0, frame.recvLen);
        EXPECT_EQ(0, frame.dataStart);
        EXPECT_EQ(0, frame.itemCount);
    }
}

TEST_F(ReadFrames, OnlyTheLowByteOfTheStationIsSent)
{
    EXPECT_EQ("01 03 00 00 00 01 84 0A", hex(readRequestFor(variable(257, "QW", 0, 1))));
    EXPECT_EQ(0xFF, readRequestFor(variable(-1, "QW", 0, 1)).sendBuf[0]);
}

TEST_F(ReadFrames, StationWhoseLowByteIsZeroStillExpectsAReply)
{
    const FRAME_PRO frame = readRequestFor(variable(256, "QW", 0, 1));
    EXPECT_EQ("00 03 00 00 00 01 85 DB", hex(frame));
    EXPECT_EQ(7, frame.recvLen);
    EXPECT_EQ(3, frame.dataStart);
    EXPECT_EQ(1, frame.itemCount);
}

TEST_F(ReadFrames, AddressAndCountAreCutToTwoBytes)
{
    expectRead({"QW", 1, 65536 + 0x1234, 65536 + 2, 2 * (65536 + 2) + 5,
                hex(withChecksum({1, 3, 0x12, 0x34, 0, 2})).c_str()});
    expectRead({"QW", 1, -1, 1, 7, "01 03 FF FF 00 01 84 2E"});
}

TEST_F(ReadFrames, CountZeroAsksForNothing)
{
    expectRead({"MW", 1, 3000, 0, 5, hex(withChecksum({1, 3, 0x0B, 0xB8, 0, 0})).c_str()});
    expectRead({"QX", 1, 16, 0, 5, hex(withChecksum({1, 3, 0, 1, 0, 0})).c_str()});
    expectRead({"QX", 1, 20, 0, 7, hex(withChecksum({1, 3, 0, 1, 0, 1})).c_str()});
}

TEST_F(ReadFrames, CountBelowZeroIsSentAsItIs)
{
    expectRead({"QW", 1, 0, -1, 3, hex(withChecksum({1, 3, 0, 0, 0xFF, 0xFF})).c_str()});
}

TEST_F(ReadFrames, HugeAddressesAndCountsWrapAround)
{
    // 15 + 2^31 - 1 wraps to -2147483634; / 16 = -134217727, + 1: low bytes 0002
    EXPECT_EQ("FF FF 00 02", registersOf("QX", INT_MAX, INT_MAX));
    // -2^31 - 3000 wraps to 2147480648; / 16 = 134217540, + 3000 = 0x8000AFC
    EXPECT_EQ("0A FC 00 01", registersOf("MX", INT_MIN, 1));
    EXPECT_EQ("00 00 00 00", registersOf("QW", INT_MIN, INT_MIN));
}

TEST_F(ReadFrames, ReplyLengthThatHasNoNumberIsOneThatNoReplyHas)
{
    // 2 x (2^31 - 1) + 5 and 2 x -2^31 + 5 would wrap to 3 and 5, an empty and an exception
    // reply's.
    EXPECT_EQ(1, readRequestFor(variable(1, "QW", 0, INT_MAX)).recvLen);
    EXPECT_EQ(1, readRequestFor(variable(1, "QW", 0, INT_MIN)).recvLen);
    // The last counts on both sides whose length is a number of 32 bits.
    EXPECT_EQ(INT_MAX, readRequestFor(variable(1, "QW", 0, 1073741821)).recvLen);
    EXPECT_EQ(1, readRequestFor(variable(1, "QW", 0, 1073741822)).recvLen);
    EXPECT_EQ(INT_MIN + 1, readRequestFor(variable(1, "QW", 0, -1073741826)).recvLen);
    EXPECT_EQ(1, readRequestFor(variable(1, "QW", 0, -1073741827)).recvLen);
}

TEST_F(ReadFrames, FrameCarriesTheVariableAsItWasHandedIn)
{
    VARIABLE wanted = variable(5, "MX", 3020, 20, {1, 0, 1});
    wanted.varId = 77;
    wanted.value[1023] = 9;
    expectSameVariable(wanted, readRequestFor(wanted).var);
}

TEST_F(ReadFrames, OnlyTheFirstVariableIsRead)
{
    const QList<VARIABLE> variables = QList<VARIABLE>()
                                      << variable(1, "QW", 0, 1) << variable(2, "MW", 3005, 6);
    EXPECT_EQ(1, getReadFrame(variables));
    ASSERT_EQ(1, int(driver.frameQueue.size()));
    EXPECT_EQ("01 03 00 00 00 01 84 0A", hex(driver.frameQueue.at(0)));
}

TEST_F(ReadFrames, NoVariableBuildsNothing)
{
    EXPECT_EQ(1, getReadFrame(QList<VARIABLE>()));
    EXPECT_TRUE(driver.frameQueue.isEmpty());
}

TEST_F(ReadFrames, FramesQueueUpBehindThoseBefore)
{
    getReadFrame(QList<VARIABLE>() << variable(1, "QW", 0, 1));
    getReadFrame(QList<VARIABLE>() << variable(1, "MW", 3000, 1));
    ASSERT_EQ(2, int(driver.frameQueue.size()));
    EXPECT_EQ("01 03 00 00 00 01 84 0A", hex(driver.frameQueue.at(0)));
    EXPECT_EQ("01 03 0B B8 00 01 06 0B", hex(driver.frameQueue.at(1)));
}
