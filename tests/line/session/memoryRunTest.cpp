#include "session/memoryRun.h"

#include <gtest/gtest.h>

// The memory that frames show. Frames by MODBUS Application Protocol V1.1b3, 6.3 to 6.12; the
// checksums are left at 0, because frames that reach here have passed their test.

namespace {

QByteArray frame(const char* hex)
{
    return QByteArray::fromHex(hex);
}

MemoryRun written(const char* request)
{
    return memoryShownBy(frame(request), QByteArray());
}

} // namespace

TEST(MemoryRun, ReadShowsItsRegisters)
{
    const MemoryRun run = memoryShownBy(frame("0103006400020000"), frame("01030412345678 0000"));
    EXPECT_EQ(1, run.station);
    EXPECT_EQ(MemoryRun::HOLDING, run.table);
    EXPECT_EQ(100 * 16, run.from);
    EXPECT_EQ(102 * 16, run.until);
    EXPECT_EQ(0x1234, run.word(100 * 16));
    EXPECT_EQ(0x5678, run.word(101 * 16));
    EXPECT_EQ(0, run.bit(100 * 16)); // 0x1234: bits 2, 4, 5, 9 and 12
    EXPECT_EQ(1, run.bit(100 * 16 + 2));
    EXPECT_EQ(1, run.bit(100 * 16 + 12));
    EXPECT_EQ(0, run.bit(100 * 16 + 15));
}

TEST(MemoryRun, ReadOfInputsIsOfAnotherTable)
{
    const MemoryRun run = memoryShownBy(frame("0204000000010000"), frame("02040200010000"));
    EXPECT_EQ(2, run.station);
    EXPECT_EQ(MemoryRun::INPUT, run.table);
    EXPECT_EQ(16, run.until);
    EXPECT_EQ(1, run.word(0));
}

TEST(MemoryRun, WritesOfRegistersShowTheirValues)
{
    EXPECT_EQ(0xBEEF, written("01060064BEEF0000").word(100 * 16));
    const MemoryRun run = written("0110006400020400010002 0000");
    EXPECT_EQ(100 * 16, run.from);
    EXPECT_EQ(102 * 16, run.until);
    EXPECT_EQ(1, run.word(100 * 16));
    EXPECT_EQ(2, run.word(101 * 16));
}

TEST(MemoryRun, CoilsAreBitsOfTheRegisters)
{
    EXPECT_EQ(5, written("01050005FF000000").from); // QX 0.5 is bit 5 of QW 0
    EXPECT_EQ(1, written("01050005FF000000").bit(5));
    EXPECT_EQ(0, written("0105000500000000").bit(5));
    // Coil 3000 is MX 0.0, the first bit of register 3000; coil 3020 is bit 4 of register 3001.
    EXPECT_EQ(3001 * 16 + 4, written("01050BCCFF000000").from);
    const MemoryRun run = written("010F0BB80012 03 0180 02 0000"); // 18 coils from 3000 on
    EXPECT_EQ(3000 * 16, run.from);
    EXPECT_EQ(3000 * 16 + 18, run.until);
    EXPECT_EQ(0x8001, run.word(3000 * 16));
    EXPECT_EQ(0, run.bit(3001 * 16));
    EXPECT_EQ(1, run.bit(3001 * 16 + 1));
}

TEST(MemoryRun, FramesThatDoNotFitShowNothing)
{
    const auto isEmpty = [](const MemoryRun& run) { return run.from == run.until; };
    EXPECT_TRUE(isEmpty(memoryShownBy(frame("0103006400020000"), frame("0103021234 0000"))));
    EXPECT_TRUE(isEmpty(memoryShownBy(frame("0103006400020000"), frame("0183020000"))));
    EXPECT_TRUE(isEmpty(memoryShownBy(frame("0103006400020000"), QByteArray())));
    EXPECT_TRUE(isEmpty(written("0110006400020200010000"))); // data of one register only
    EXPECT_TRUE(isEmpty(written("0108000000000000")));
    EXPECT_TRUE(isEmpty(memoryShownBy(QByteArray(), QByteArray())));
}
