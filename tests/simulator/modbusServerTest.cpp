#include "modbusServer.h"

#include "hexText.h"

#include <gtest/gtest.h>

// Requests and replies are as pymodbus 3.0's RTU framer builds them.

namespace {

class Served : public ::testing::Test
{
protected:
    std::string reply(const std::string& request)
    {
        return hexOf(m_server.serve(bytesOf(request), m_stations));
    }
    PlcMemory& memory(int station)
    {
        return *m_stations.find(station);
    }

    PlcStations m_stations{{1, 2}};
    ModbusServer m_server;
};

} // namespace

TEST_F(Served, WrittenRegistersAreReadBack)
{
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", reply("01 06 0B B9 04 D2 D8 96"));
    EXPECT_EQ(1234, memory(1).holdingRegister(3001));
    EXPECT_EQ("01 10 00 0A 00 03 A0 0A", reply("01 10 00 0A 00 03 06 00 01 00 02 FF FF 5B 10"));
    EXPECT_EQ("01 03 06 00 01 00 02 FF FF BC C5", reply("01 03 00 0A 00 03 25 C9"));
}

TEST_F(Served, WrittenCoilShowsInItsRegister)
{
    EXPECT_EQ("01 05 0B C9 FF 00 5E 20", reply("01 05 0B C9 FF 00 5E 20")); // MX 3017 on
    EXPECT_EQ("01 03 02 00 02 39 85", reply("01 03 0B B9 00 01 57 CB"));    // MW 3001
    EXPECT_EQ("01 05 0B C9 00 00 1F D0", reply("01 05 0B C9 00 00 1F D0")); // MX 3017 off
    EXPECT_EQ(0, memory(1).holdingRegister(3001));
}

TEST_F(Served, SeveralWrittenCoilsShowInTheirRegister)
{
    EXPECT_EQ("01 0F 00 00 00 10 54 07", reply("01 0F 00 00 00 10 02 1F 80 EB B0"));
    EXPECT_EQ("01 03 02 80 1F 98 4C", reply("01 03 00 00 00 01 84 0A"));
}

TEST_F(Served, WrittenRegistersShowInTheirCoils)
{
    reply("01 06 0B B9 04 D2 D8 96"); // MW 3001 = 1234 = 0x04D2
    for (int bit = 0; bit < 16; ++bit)
        EXPECT_EQ((1234 >> bit & 1) != 0, memory(1).coil(3016 + bit)) << bit;
    reply("01 10 00 0A 00 03 06 00 01 00 02 FF FF 5B 10"); // QW 10 to 12 = 1, 2, 65535
    EXPECT_TRUE(memory(1).coil(160));
    EXPECT_TRUE(memory(1).coil(177));
    EXPECT_TRUE(memory(1).coil(207));
}

TEST_F(Served, FunctionFourReadsInputRegisters)
{
    memory(1).setInputBit(0, true);
    memory(1).setInputBit(15, true);
    EXPECT_EQ("01 04 02 80 01 19 30", reply("01 04 00 00 00 01 31 CA"));
}

TEST_F(Served, LastRegisterOfEachAreaIsReadAndWritten)
{
    memory(1).setInputRegister(255, 0x1234);
    EXPECT_EQ("01 04 02 12 34 B4 47", reply("01 04 00 FF 00 01 01 FA"));
    EXPECT_EQ("01 06 00 FF 12 34 B4 8D", reply("01 06 00 FF 12 34 B4 8D"));
    EXPECT_EQ("01 03 02 12 34 B5 33", reply("01 03 00 FF 00 01 B4 3A"));
    EXPECT_EQ("01 06 1B B7 12 34 32 7F", reply("01 06 1B B7 12 34 32 7F"));
    EXPECT_EQ("01 03 04 00 00 12 34 F7 44", reply("01 03 1B B6 00 02 23 09"));
    memory(1).setHoldingRegister(7095, 0);
    EXPECT_EQ("01 10 1B B7 00 01 B7 0B", reply("01 10 1B B7 00 01 02 12 34 1B A1"));
    EXPECT_EQ(0x1234, memory(1).holdingRegister(7095));
}

// The device has the holding registers 0 to 255 and 3000 to 7095 and the input registers 0 to 255.
TEST_F(Served, RegisterOutsideTheAreasIsRefusedAndNotWritten)
{
    struct
    {
        const char* request;
        const char* reply;
    } const rows[] = {
        {"01 03 00 FF 00 02 F4 3B", "01 83 02 C0 F1"}, // 255 and 256
        {"01 03 01 00 00 01 85 F6", "01 83 02 C0 F1"}, // 256
        {"01 03 0B B7 00 01 36 08", "01 83 02 C0 F1"}, // 2999
        {"01 03 0B B7 00 02 76 09", "01 83 02 C0 F1"}, // 2999 and 3000
        {"01 03 1B B7 00 02 72 C9", "01 83 02 C0 F1"}, // 7095 and 7096
        {"01 03 1B B8 00 01 02 CB", "01 83 02 C0 F1"}, // 7096
        {"01 04 00 FF 00 02 41 FB", "01 84 02 C2 C1"},
        {"01 04 01 00 00 01 30 36", "01 84 02 C2 C1"},
        {"01 06 01 00 12 34 85 41", "01 86 02 C3 A1"},
        {"01 06 0B B7 12 34 36 BF", "01 86 02 C3 A1"},
        {"01 06 1B B8 12 34 02 7C", "01 86 02 C3 A1"},
        {"01 06 FF FF 12 34 84 99", "01 86 02 C3 A1"},
        {"01 10 1B B7 00 02 04 00 01 00 02 D7 CC", "01 90 02 CD C1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.reply, reply(row.request)) << row.request;
    for (const int number : {256, 2999, 7095, 7096, 65535})
        EXPECT_EQ(0, memory(1).holdingRegister(number)) << number;
}

TEST_F(Served, BroadcastToARegisterOutsideTheAreasIsNotExecuted)
{
    EXPECT_EQ("", reply("00 06 01 00 12 34 84 90"));
    EXPECT_EQ(0, memory(1).holdingRegister(256));
    EXPECT_EQ("01 03 02 00 00 B8 44", reply("01 03 00 00 00 01 84 0A")); // nothing is left behind
}

TEST_F(Served, CoilsPastTheLastAreRefused)
{
    EXPECT_EQ("01 8F 02 C5 F1", reply("01 0F FF FF 00 02 01 03 9E 8D"));
    EXPECT_EQ("01 0F 0B B7 00 02 66 08", reply("01 0F 0B B7 00 02 01 03 6B F7"));
    EXPECT_EQ(0x0080, memory(1).holdingRegister(187));  // coil 2999 is QX 374.7
    EXPECT_EQ(0x0001, memory(1).holdingRegister(3000)); // coil 3000 is MX 0.0
}

TEST_F(Served, TheLastCoilIsWritten)
{
    EXPECT_EQ("01 05 FF FF FF 00 8C 1E", reply("01 05 FF FF FF 00 8C 1E"));
    EXPECT_EQ(0x0080, memory(1).holdingRegister(6908)); // MX 65535: 3000 + 16 * 3908 + 7
    memory(1).setCoil(65535, false);
    EXPECT_EQ("01 0F FF FF 00 01 94 2F", reply("01 0F FF FF 00 01 01 01 EF 4C"));
    EXPECT_EQ(0x0080, memory(1).holdingRegister(6908));
}

TEST_F(Served, EachStationHasItsOwnMemory)
{
    reply("02 0F 00 00 00 10 02 1F 80 FF 40");
    EXPECT_EQ(0x801F, memory(2).holdingRegister(0));
    EXPECT_EQ(0, memory(1).holdingRegister(0));
}

TEST_F(Served, BroadcastIsExecutedByAllStationsWithoutReply)
{
    EXPECT_EQ("", reply("00 06 00 C8 00 4D C9 D0"));
    EXPECT_EQ("", reply("00 10 00 0A 00 03 06 00 01 00 02 FF FF 59 91"));
    for (const int station : {1, 2}) {
        EXPECT_EQ(77, memory(station).holdingRegister(200)) << station;
        EXPECT_EQ(0xFFFF, memory(station).holdingRegister(12)) << station;
    }
    EXPECT_EQ("01 03 06 00 01 00 02 FF FF BC C5", reply("01 03 00 0A 00 03 25 C9"));
}

TEST_F(Served, AbsentStationDoesNotReply)
{
    EXPECT_EQ("", reply("03 03 00 00 00 01 85 E8"));
    EXPECT_EQ("01 03 02 00 00 B8 44", reply("01 03 00 00 00 01 84 0A"));
}

TEST_F(Served, RequestOutsideTheDevicesLimitsIsRefused)
{
    EXPECT_EQ("01 81 01 81 90", reply("01 01 00 00 00 08 3D CC")); // reads coils
    EXPECT_EQ("01 83 02 C0 F1", reply("01 03 FF FF 00 02 C4 2F")); // past the last register
    EXPECT_EQ("01 83 03 01 31", reply("01 03 00 00 00 7E C5 EA")); // 126 registers
}

// Requests by pymodbus' messages 43 (device identification), 7 and 22, answers by its
// ExceptionResponse.
TEST_F(Served, UnknownFunctionIsRefusedWhateverItsData)
{
    EXPECT_EQ("01 AB 01 9E F0", reply("01 2B 0E 01 00 70 77"));
    EXPECT_EQ("01 87 01 82 30", reply("01 07 41 E2"));
    EXPECT_EQ("01 96 01 8E 60", reply("01 16 00 04 00 F2 00 25 67 EE"));
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", reply("01 06 0B B9 04 D2 D8 96"));
}

TEST_F(Served, BroadcastOfUnknownFunctionHasNoReply)
{
    EXPECT_EQ("", reply("00 2B 0E 01 00 4D B7"));
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", reply("01 06 0B B9 04 D2 D8 96"));
}

TEST_F(Served, RefusedRequestLeavesNoBytesBehind)
{
    reply("01 03 00 00 00 7E C5 EA");
    EXPECT_EQ("01 06 0B B9 04 D2 D8 96", reply("01 06 0B B9 04 D2 D8 96"));
}
