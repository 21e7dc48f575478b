#include "checksum.h"
#include "driverFixture.h"
#include "modbusChecksum.h"

class Checksum : public DriverTest
{
};

namespace {

unsigned checksumOf(const QByteArray& body)
{
    return computate_check(reinterpret_cast<const unsigned char*>(body.constData()),
                           static_cast<unsigned short>(body.size()));
}

} // namespace

TEST_F(Checksum, OfAReadRequest)
{
    // "01 03 00 00 00 01 84 0A" on the wire, low byte first
    EXPECT_EQ(0x0A84u, checksumOf(bytes({0x01, 0x03, 0x00, 0x00, 0x00, 0x01})));
}

TEST_F(Checksum, OfNothingIsTheStartValue)
{
    const unsigned char one = 0x55;
    EXPECT_EQ(0xFFFFu, computate_check(&one, 0));
    EXPECT_EQ(0xFFFFu, computate_check(nullptr, 0));
}

TEST_F(Checksum, OfPublishedExamples)
{
    // The check value of CRC-16/MODBUS in the usual catalogues of CRCs.
    EXPECT_EQ(0x4B37u, checksumOf(QByteArray("123456789")));
    // The worked example of the Modbus protocol guides: 02 07, then 41 12 on the wire.
    EXPECT_EQ(0x1241u, checksumOf(bytes({0x02, 0x07})));
}

// The body is worked through four bytes at a time, and byte by byte at its end.
TEST_F(Checksum, OfEveryLengthUpToSeveralSteps)
{
    QByteArray body;
    for (int length = 0; length <= 21; ++length) {
        EXPECT_EQ(modbusChecksum(body), checksumOf(body)) << length << " bytes";
        body.append(static_cast<char>(151 * length + 3));
    }
}

TEST_F(Checksum, OfEveryByteAtEveryPlace)
{
    for (int length : {1, 9}) {
        for (int at = 0; at < length; ++at) {
            for (int value = 0; value < 256; ++value) {
                QByteArray body(length, '\x2B');
                body[at] = static_cast<char>(value);
                ASSERT_EQ(modbusChecksum(body), checksumOf(body)) << value << " at " << at;
            }
        }
    }
}

TEST_F(Checksum, OfTheLongestLength)
{
    // pymodbus 3.0, computeCRC
    EXPECT_EQ(0x40BFu, checksumOf(QByteArray(65535, '\0')));
    EXPECT_EQ(0x00FFu, checksumOf(QByteArray(65535, '\xFF')));
}

TEST_F(Checksum, CoversTheFirstBytesOnly)
{
    const unsigned char block[] = {0x01, 0x03, 0x00, 0x00, 0x00, 0x01, 0xAA, 0xBB};
    EXPECT_EQ(0x0A84u, computate_check(block, 6));
}

TEST_F(Checksum, LeavesTheBytesAsTheyAre)
{
    const QByteArray body = bytes({0x01, 0x03, 0x00, 0x00, 0x00, 0x01});
    checksumOf(body);
    EXPECT_EQ("01 03 00 00 00 01", hex(body));
}

TEST_F(Checksum, OfAFrameWithItsChecksumIsZero)
{
    // MODBUS Application Protocol V1.1b3, 6.12, for station 17; checksum of pymodbus' RTU framer
    EXPECT_EQ(0u, checksumOf(bytes({0x11, 0x10, 0x00, 0x01, 0x00, 0x02, 0x04, 0x00, 0x0A, 0x01,
                                    0x02, 0xC6, 0xF0})));
}
