// Bits as variables of their own inside a word unit: each has a place of its own in the two bytes.

#include "cacheHelpers.h"
#include "valueRead.h"
#include "writeCompletion.h"

namespace {

enum { STATION = 4, UNIT = 10, WORD_BITS = 16, CONFIRMED = 1 };

const OtherRow BITS_OF_WORDS("1", "16");

/// The images' bytes with one bit of the word set.
Bytes oneBit(int bit)
{
    Bytes expected(IMAGE_BYTES, 0);
    expected[std::size_t(bit / 8)] = 1 << (bit % 8);
    return expected;
}

} // namespace

class EveryBitOfAWord : public DriverTest
{
};

TEST_F(EveryBitOfAWord, IsReadFromItsPlace)
{
    for (int bit = 0; bit < WORD_BITS; ++bit) {
        putUnit(STATION, "V", UNIT, 1u << bit);
        unsigned char out[WORD_BITS] = {};
        readValuesOfArea(BITS_OF_WORDS, STATION, text("V_bit"), UNIT * WORD_BITS, WORD_BITS, out);
        Bytes expected(WORD_BITS, 0);
        expected[std::size_t(bit)] = 1;
        EXPECT_EQ(expected, Bytes(out, out + WORD_BITS)) << "bit " << bit;
    }
}

TEST_F(EveryBitOfAWord, IsTakenOverAtItsPlaceWhenItsWriteIsConfirmed)
{
    for (int bit = 0; bit < WORD_BITS; ++bit) {
        const int index = putPendingWrite(STATION, "V", UNIT, 0, 1u << bit);
        driver.dataAreas[index].pendingBitWrites = 1u << (2 * bit);
        completeWritesOfArea(BITS_OF_WORDS, STATION, text("V_bit"), UNIT * WORD_BITS + bit, 1,
                             CONFIRMED);
        EXPECT_EQ(oneBit(bit), readBytes(STATION, "V", UNIT)) << "bit " << bit;
    }
}
