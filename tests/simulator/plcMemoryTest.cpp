#include "plcMemory.h"

#include "hexText.h"

#include <gtest/gtest.h>

TEST(PlcMemory, CoilIsABitOfItsRegister)
{
    struct
    {
        int coil;
        int word;
        int value;
    } const rows[] = {
        {0, 0, 0x0001},       {15, 0, 0x8000},      {16, 1, 0x0001},
        {2999, 187, 0x0080},                                               // 16 * 187 + 7
        {3000, 3000, 0x0001}, {3017, 3001, 0x0002}, {65535, 6908, 0x0080}, // 3000 + 16 * 3908 + 7
    };
    for (const auto& row : rows) {
        PlcMemory memory;
        memory.setCoil(row.coil, true);
        EXPECT_EQ(row.value, memory.holdingRegister(row.word)) << row.coil;
        memory.setCoil(row.coil, false);
        EXPECT_EQ(0, memory.holdingRegister(row.word)) << row.coil;
    }
}

TEST(PlcMemory, RegisterIsItsSixteenCoils)
{
    PlcMemory memory;
    memory.setHoldingRegister(3002, 0x8005);
    for (int bit = 0; bit < 16; ++bit)
        EXPECT_EQ(bit == 0 || bit == 2 || bit == 15, memory.coil(3032 + bit)) << bit;
    EXPECT_FALSE(memory.coil(3031));
    EXPECT_FALSE(memory.coil(3048));
}

TEST(PlcMemory, OutputRegisterWithoutCoilsChangesNoMarker)
{
    PlcMemory memory;
    memory.setHoldingRegister(187, 0xFFFF); // coils 2992 to 2999 are its low half
    memory.setHoldingRegister(188, 0xFFFF);
    EXPECT_TRUE(memory.coil(2999));
    EXPECT_FALSE(memory.coil(3000));
    EXPECT_EQ(0, memory.holdingRegister(3000));
}

TEST(PlcMemory, WritingACoilKeepsTheOtherBitsOfItsRegister)
{
    PlcMemory memory;
    memory.setHoldingRegister(3000, 0xF0F0);
    memory.setCoil(3000, true);
    memory.setCoil(3015, false);
    EXPECT_EQ(0x70F1, memory.holdingRegister(3000));
}

TEST(PlcMemory, InputBitIsABitOfItsInputRegister)
{
    PlcMemory memory;
    memory.setInputRegister(4, 0x0100);
    memory.setInputBit(64, true);
    memory.setInputBit(72, false);
    EXPECT_EQ(0x0001, memory.inputRegister(4));
}

TEST(PlcMemory, InputAndHoldingRegistersAreSeparate)
{
    PlcMemory memory;
    memory.setInputRegister(0, 7);
    memory.setHoldingRegister(1, 8);
    EXPECT_EQ(0, memory.holdingRegister(0));
    EXPECT_EQ(0, memory.inputRegister(1));
}
