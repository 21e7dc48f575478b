#include "checksum.h"
#include "driverFixture.h"

class ChecksumSteps : public DriverTest
{
};

namespace {

enum { LONGEST = 21, BYTE_VALUES = 256 };

unsigned checksumOf(const std::vector<unsigned char>& body)
{
    return computate_check(body.data(), static_cast<unsigned short>(body.size()));
}

/// CRC-16/MODBUS as the Modbus serial line guide words it, a bit at a time.
unsigned bitByBit(const std::vector<unsigned char>& body)
{
    unsigned remainder = 0xFFFF;
    for (unsigned char byte : body) {
        remainder ^= byte;
        for (int i = 0; i < 8; ++i)
            remainder = (remainder & 1u) != 0 ? remainder >> 1 ^ 0xA001u : remainder >> 1;
    }
    return remainder;
}

} // namespace

TEST_F(ChecksumSteps, OfEveryLength)
{
    std::vector<unsigned char> body;
    for (int length = 0; length <= LONGEST; ++length) {
        EXPECT_EQ(bitByBit(body), checksumOf(body)) << length << " bytes";
        body.push_back(static_cast<unsigned char>(151 * length + 3));
    }
}

TEST_F(ChecksumSteps, OfEveryByteAtEveryPlace)
{
    for (size_t at = 0; at < 9; ++at) {
        for (int value = 0; value < BYTE_VALUES; ++value) {
            std::vector<unsigned char> body(9, 0x2B);
            body[at] = static_cast<unsigned char>(value);
            ASSERT_EQ(bitByBit(body), checksumOf(body)) << value << " at " << at;
        }
    }
}
