#include "changeTest.h"

namespace {

class ChangeNotification : public ChangeTest
{
};

} // namespace

TEST_F(ChangeNotification, AMonitoredBitIsReportedByItsAreaAndAddress)
{
    putV(12, 1);
    EXPECT_EQ(Notifications({told("V", 12)}), bitChange());
}

TEST_F(ChangeNotification, ABitThatIsNotMonitoredIsNotReported)
{
    putV(12, 0xFFFFFFFEu, 0xFFFFFFFFu);
    EXPECT_EQ(Notifications(), bitChange());
}

TEST_F(ChangeNotification, OfABitNothingButItsOwnMarkCounts)
{
    putV(12, 0xFFFFFFFFu, 0xFFFFFFFFu);
    EXPECT_EQ(Notifications({told("V", 12)}), bitChange());
}

TEST_F(ChangeNotification, ABitAtANegativeAddressIsReported)
{
    putV(-3, 1);
    EXPECT_EQ(Notifications({told("V", -3)}), bitChange());
}

TEST_F(ChangeNotification, AMonitoredWordIsReportedEvenWhenOldAndNewAreEqual)
{
    putV(5, 1);
    EXPECT_EQ(Notifications({told("V", 5)}), wordChange(7, 7));
    EXPECT_EQ(Notifications({told("V", 5)}), wordChange(7, 7));
}

TEST_F(ChangeNotification, WithoutMarksNothingIsReported)
{
    putV(5, 0);
    EXPECT_EQ(Notifications(), byteChange(0, 0xFF));
    EXPECT_EQ(Notifications(), wordChange(0, 0xFFFF));
    EXPECT_EQ(Notifications(), dwordChange(0, -1));
}

TEST_F(ChangeNotification, AByteReportsItsBitsThenItselfThenItsValues)
{
    putV(10, 0x7F, 0x03);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V_bit", 81), told("V_B", 10), told("V_W", 10),
                             told("V_W", 9), told("V_D", 10), told("V_D", 9), told("V_D", 8),
                             told("V_D", 7)}),
              byteChange(0, 3));
}

TEST_F(ChangeNotification, AWordReportsItsBitsThenItselfThenItsValues)
{
    putV(10, 0x7F, 0x03);
    EXPECT_EQ(Notifications({told("V_bit", 160), told("V_bit", 161), told("V", 10), told("V_D", 10),
                             told("V_D", 9)}),
              wordChange(0, 3));
}

TEST_F(ChangeNotification, ADoubleWordReportsItsBitsThenItselfAndNoValues)
{
    putV(10, 0x7F, 0x03);
    EXPECT_EQ(Notifications({told("V_bit", 320), told("V_bit", 321), told("V", 10)}),
              dwordChange(0, 3));
}

TEST_F(ChangeNotification, EachMarkOfAByteReportsItsOwnValue)
{
    const Notification expected[] = {told("V_B", 9), told("V_W", 9), told("V_W", 8), told("V_D", 9),
                                     told("V_D", 8), told("V_D", 7), told("V_D", 6)};
    for (unsigned mark = 0; mark < 7; ++mark) {
        putV(9, 1u << mark);
        EXPECT_EQ(Notifications({expected[mark]}), byteChange(0, 1)) << mark;
    }
}

TEST_F(ChangeNotification, EachMarkOfAWordReportsItsOwnValue)
{
    const Notification expected[] = {told("V", 9), told("V_D", 9), told("V_D", 8)};
    for (unsigned mark = 0; mark < 3; ++mark) {
        putV(9, 1u << mark);
        EXPECT_EQ(Notifications({expected[mark]}), wordChange(0, 1)) << mark;
    }
}

TEST_F(ChangeNotification, MarksThatNoWidthKnowsReportNothing)
{
    putV(9, ~0x7Fu);
    EXPECT_EQ(Notifications(), byteChange(0, 1));
    putV(9, ~0x07u);
    EXPECT_EQ(Notifications(), wordChange(0, 1));
    putV(9, ~0x01u);
    EXPECT_EQ(Notifications(), dwordChange(0, 1));
}

TEST_F(ChangeNotification, AByteAtZeroIsNeverALaterByteOfAValue)
{
    putV(0, 1u << 2 | 1u << 4);
    EXPECT_EQ(Notifications(), byteChange(0, 1));
}

TEST_F(ChangeNotification, AByteAtZeroCanBeTheFirstByteOfAValue)
{
    putV(0, 1u << 1 | 1u << 3);
    EXPECT_EQ(Notifications({told("V_W", 0), told("V_D", 0)}), byteChange(0, 1));
}

TEST_F(ChangeNotification, ValuesThatWouldStartBelowZeroAreNotReported)
{
    putV(2, 0x78);
    EXPECT_EQ(Notifications({told("V_D", 2), told("V_D", 1), told("V_D", 0)}), byteChange(0, 1));
    putV(3, 0x78);
    EXPECT_EQ(Notifications({told("V_D", 3), told("V_D", 2), told("V_D", 1), told("V_D", 0)}),
              byteChange(0, 1));
    putV(0, 0x06);
    EXPECT_EQ(Notifications({told("V_D", 0)}), wordChange(0, 1));
    putV(1, 0x06);
    EXPECT_EQ(Notifications({told("V_D", 1), told("V_D", 0)}), wordChange(0, 1));
}

TEST_F(ChangeNotification, AUnitAtANegativeAddressReportsItselfOnly)
{
    for (int address : {-1, int(LOWEST)}) {
        putV(address, 0x7F);
        EXPECT_EQ(Notifications({told("V_B", address)}), byteChange(0, 1));
        EXPECT_EQ(Notifications({told("V", address)}), wordChange(0, 1));
    }
}

TEST_F(ChangeNotification, AChangeOfOneByteIsAByteChange)
{
    putV(10, 1, 0x81);
    const unsigned char before[] = {0x01};
    const unsigned char after[] = {0x80};
    unitDataChange(1, before, after, 0);
    EXPECT_EQ(Notifications({told("V_bit", 80), told("V_bit", 87), told("V_B", 10)}),
              takeNotifications());
}

TEST_F(ChangeNotification, AChangeOfTwoBytesIsAWordChangeLowByteFirst)
{
    putV(10, 3, 0xFFFF);
    const unsigned char before[] = {0x01, 0x00};
    const unsigned char after[] = {0x01, 0x40};
    unitDataChange(2, before, after, 0);
    EXPECT_EQ(Notifications({told("V_bit", 174), told("V", 10), told("V_D", 10)}),
              takeNotifications());
}

TEST_F(ChangeNotification, AChangeOfFourBytesIsADoubleWordChangeLowByteFirst)
{
    putV(10, 3, 0xFFFFFFFFu);
    const unsigned char before[] = {0x01, 0x00, 0x00, 0x80};
    const unsigned char after[] = {0x01, 0x00, 0x01, 0x00};
    unitDataChange(4, before, after, 0);
    EXPECT_EQ(Notifications({told("V_bit", 336), told("V_bit", 351), told("V", 10)}),
              takeNotifications());
}
