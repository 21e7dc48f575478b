#include "modbusChecksum.h"

#include <gtest/gtest.h>

typedef std::vector<unsigned char> Bytes;

TEST(ModbusChecksum, IsThatOfPublishedExamples)
{
    // The check value of CRC-16/MODBUS in the usual catalogues of CRCs.
    EXPECT_EQ(0x4B37u, modbusChecksum(std::string("123456789")));
    // The worked example of the Modbus protocol guides: 02 07, then 41 12 on the wire.
    EXPECT_EQ(0x1241u, modbusChecksum(Bytes{0x02, 0x07}));
    EXPECT_EQ(0xFFFFu, modbusChecksum(Bytes()));
}

TEST(ModbusChecksum, IsThatOfAnotherProgramForTheLongestLength)
{
    // pymodbus 3.0, computeCRC
    EXPECT_EQ(0x40BFu, modbusChecksum(Bytes(65535, 0)));
    EXPECT_EQ(0x00FFu, modbusChecksum(Bytes(65535, 0xFF)));
}

TEST(ModbusChecksum, ClosesAFrameWithItsLowByteFirst)
{
    // pymodbus' RTU framer
    EXPECT_EQ((Bytes{0x01, 0x03, 0x00, 0x00, 0x00, 0x01, 0x84, 0x0A}),
              frameWith(Bytes{0x01, 0x03, 0x00, 0x00, 0x00, 0x01}));
    EXPECT_EQ((Bytes{0x01, 0x83, 0x02, 0xC0, 0xF1}), frameWith(Bytes{0x01, 0x83, 0x02}));
}
