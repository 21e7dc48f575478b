// Values of four bytes, in one unit or in two words, are told of and completed byte by byte.

#include "cacheHelpers.h"
#include "changeNotification.h"
#include "writeCompletion.h"

namespace {

enum { STATION = 4, UNIT = 10, FIRST_BIT = 32 * UNIT, CONFIRMED = 1, FAILED = 0 };

const unsigned EVERY_BIT = 0xFFFFFFFF;

class DoubleWordBits : public DriverTest
{
protected:
    DoubleWordBits()
    {
        driver.callbackContext = CONTEXT;
    }

    static Notifications bitsTold(const std::vector<int>& bits)
    {
        Notifications told;
        for (int bit : bits)
            told.push_back({CONTEXT, STATION, "V_bit", FIRST_BIT + bit});
        return told;
    }

    /// What is told when a write of two words, the low one first, is given up.
    Notifications givenUp(const unsigned (&read)[2], const unsigned (&written)[2])
    {
        for (int i = 0; i < 2; ++i) {
            const int index = putPendingWrite(STATION, "V", UNIT + i, read[i], written[i]);
            driver.dataAreas[index].bitMonitorMask = i == 0 ? EVERY_BIT : 0;
        }
        completeWritesOfArea(OtherRow("32", "16"), STATION, text("V"), UNIT, 1, FAILED);
        return takeNotifications();
    }
};

} // namespace

TEST_F(DoubleWordBits, OneChangedByteIsToldOfByItsOwnBit)
{
    const int index = putUnit(STATION, "V", UNIT, 0, 0, EVERY_BIT);
    for (int byte = 0; byte < 4; ++byte) {
        unsigned char changed[4] = {};
        const unsigned char zeros[4] = {};
        changed[byte] = 1;
        unitDataChange(4, changed, zeros, index);
        EXPECT_EQ(bitsTold({8 * byte}), takeNotifications()) << "from byte " << byte;
        unitDataChange(4, zeros, changed, index);
        EXPECT_EQ(bitsTold({8 * byte}), takeNotifications()) << "to byte " << byte;
    }
}

TEST_F(DoubleWordBits, APairOfWordsGivenUpTellsOfTheBitsThatChangeBack)
{
    EXPECT_EQ(bitsTold({0, 15, 16, 31}), givenUp({0x0000, 0x0000}, {0x8001, 0x8001}));
    EXPECT_EQ(bitsTold({1, 14, 17, 30}), givenUp({0xFFFF, 0xFFFF}, {0xBFFD, 0xBFFD}));
    EXPECT_EQ(bitsTold({2, 13, 18, 29}), givenUp({0x2004, 0x2004}, {0x0000, 0x0000}));
}

TEST_F(DoubleWordBits, AConfirmedWriteLeavesTheWrittenBytes)
{
    putPendingWrite(STATION, "V", UNIT, 0x04030201, 0xA4A3A2A1);
    completeWritesOfArea(OtherRow("32", "32"), STATION, text("V"), UNIT, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0xA1, 0xA2, 0xA3, 0xA4}),
              imageBytes(cachedUnit(STATION, "V", UNIT).writeImage));
}
