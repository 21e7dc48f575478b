#include "checksum.h"
#include "driverFixture.h"
#include "modbusChecksum.h"

class ChecksumSteps : public DriverTest
{
};

namespace {

enum { LONGEST = 21, BYTE_VALUES = 256 };

unsigned checksumOf(const std::vector<unsigned char>& body)
{
    return computate_check(body.data(), static_cast<unsigned short>(body.size()));
}

} // namespace

TEST_F(ChecksumSteps, OfEveryLength)
{
    std::vector<unsigned char> body;
    for (int length = 0; length <= LONGEST; ++length) {
        EXPECT_EQ(modbusChecksum(body), checksumOf(body)) << length << " bytes";
        body.push_back(static_cast<unsigned char>(151 * length + 3));
    }
}

TEST_F(ChecksumSteps, OfEveryByteAtEveryPlace)
{
    for (size_t at = 0; at < 9; ++at) {
        for (int value = 0; value < BYTE_VALUES; ++value) {
            std::vector<unsigned char> body(9, 0x2B);
            body[at] = static_cast<unsigned char>(value);
            ASSERT_EQ(modbusChecksum(body), checksumOf(body)) << value << " at " << at;
        }
    }
}
