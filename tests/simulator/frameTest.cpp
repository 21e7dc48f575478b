#include "frame.h"
#include "hexText.h"

#include <gtest/gtest.h>

TEST(Frame, ChecksumMatchesPymodbus)
{
    // pymodbus 3.0's RTU framer
    EXPECT_EQ("11 03 00 6B 00 03 76 87", hexOf(withCrc(bytesOf("11 03 00 6B 00 03"))));
    EXPECT_EQ("01 83 06 C1 32", hexOf(withCrc(bytesOf("01 83 06"))));
}

TEST(Frame, GoodChecksumAtTheEndIsRecognised)
{
    const Bytes frame = bytesOf("01 0F 00 00 00 10 02 1F 80 EB B0"); // pymodbus 3.0's RTU framer
    EXPECT_TRUE(endsWithItsCrc(frame.data(), frame.size()));
}

TEST(Frame, AnyFlippedBitMakesTheChecksumBad)
{
    const Bytes frame = bytesOf("01 03 0B B8 00 01 06 0B"); // pymodbus 3.0's RTU framer
    for (std::size_t bit = 0; bit < frame.size() * 8; ++bit) {
        Bytes spoilt = frame;
        spoilt[bit / 8] = static_cast<std::uint8_t>(spoilt[bit / 8] ^ 1u << bit % 8);
        EXPECT_FALSE(endsWithItsCrc(spoilt.data(), spoilt.size())) << bit;
    }
}

TEST(Frame, FewerBytesThanAChecksumAreNoFrame)
{
    const std::uint8_t byte = 0xFF;
    EXPECT_FALSE(endsWithItsCrc(&byte, 0));
    EXPECT_FALSE(endsWithItsCrc(&byte, 1));
}
