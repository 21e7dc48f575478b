#include "changeTest.h"

namespace {

class BitNotification : public ChangeTest
{
};

} // namespace

TEST_F(BitNotification, MonitoredBitsOfAWordAreReportedInAscendingOrderWhereTheyChange)
{
    putV(5, 0, 0x0009);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V_bit", 83)}), wordChange(0x0001, 0x0008));
    EXPECT_EQ(Notifications({told("V_bit", 83)}), wordChange(0x0001, 0x0009));
    EXPECT_EQ(Notifications(), wordChange(0x0009, 0xFFFF));
}

TEST_F(BitNotification, AUnitHasTheBitsOfItsWidth)
{
    putV(5, 0, 0xFFFFFF81u);
    EXPECT_EQ(Notifications({told("V_bit", 40), told("V_bit", 47)}), byteChange(0x00, 0xFF));
    putV(5, 0, 0xFFFF8001u);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V_bit", 95)}), wordChange(0, -1));
    putV(5, 0, 0x80010001u);
    EXPECT_EQ(Notifications({told("V_bit", 160), told("V_bit", 176), told("V_bit", 191)}),
              dwordChange(0, -1));
}

TEST_F(BitNotification, TheHighestBitOfADoubleWordIsComparedLikeAnyOther)
{
    putV(5, 0, 0x80000000u);
    EXPECT_EQ(Notifications(), dwordChange(LOWEST, LOWEST + 1));
    EXPECT_EQ(Notifications({told("V_bit", 191)}), dwordChange(LOWEST, 0));
}

TEST_F(BitNotification, BitsAtNegativeAddressesAreReported)
{
    putV(-1, 0, 0x0008);
    EXPECT_EQ(Notifications({told("V_bit", -5)}), byteChange(0, 8));
    EXPECT_EQ(Notifications({told("V_bit", -13)}), wordChange(0, 8));
    EXPECT_EQ(Notifications({told("V_bit", -29)}), dwordChange(0, 8));
}

TEST_F(BitNotification, BitAddressesWrapAroundAt32Bits)
{
    putV(0x08000000, 0, 0x0001);
    EXPECT_EQ(Notifications({told("V_bit", LOWEST)}), wordChange(0, 1));
}

TEST_F(BitNotification, WithoutOldOrNewValueEveryMonitoredBitIsReported)
{
    putV(2, 0, 0x0081);
    const unsigned char byte = 0xFF;
    const int number = 0xFF;
    for (int given : {0, 1, 2}) {
        SCOPED_TRACE(given);
        _byteDataChange(given == 1 ? &byte : nullptr, given == 2 ? &byte : nullptr, 0, 0);
        EXPECT_EQ(Notifications({told("V_bit", 16), told("V_bit", 23)}), takeNotifications());
        _wordDataChange(given == 1 ? &number : nullptr, given == 2 ? &number : nullptr, 0, 0);
        EXPECT_EQ(Notifications({told("V_bit", 32), told("V_bit", 39)}), takeNotifications());
        _dwordDataChange(given == 1 ? &number : nullptr, given == 2 ? &number : nullptr, 0, 0);
        EXPECT_EQ(Notifications({told("V_bit", 64), told("V_bit", 71)}), takeNotifications());
    }
}

TEST_F(BitNotification, AWordThatIsAVariableTooIsReportedAfterItsBits)
{
    putV(5, 1, 0x0001);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V", 5)}), wordChange(0, 1));
    putV(5, 1, 0xFFFFFFFFu);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V_bit", 95), told("V", 5)}),
              wordChange(0, 0x8001));
}

TEST_F(BitNotification, SkippingBitsSuppressesBitReportsAndNoOthers)
{
    putV(8, 0x7F, 0xFFFFFFFFu);
    for (int skipBits : {1, 2, -1}) {
        EXPECT_EQ(Notifications({told("V_B", 8), told("V_W", 8), told("V_W", 7), told("V_D", 8),
                                 told("V_D", 7), told("V_D", 6), told("V_D", 5)}),
                  byteChange(0, 0xFF, skipBits));
        EXPECT_EQ(Notifications({told("V", 8), told("V_D", 8), told("V_D", 7)}),
                  wordChange(0, 0xFFFF, skipBits));
        EXPECT_EQ(Notifications({told("V", 8)}), dwordChange(0, -1, skipBits));
    }
    putV(8, 1, 0xFFFFFFFFu);
    _byteDataChange(0, 0, 0, 1);
    _wordDataChange(0, 0, 0, 1);
    _dwordDataChange(0, 0, 0, 1);
    EXPECT_EQ(Notifications({told("V_B", 8), told("V", 8), told("V", 8)}), takeNotifications());
}
