#include "changeTest.h"

namespace {

class ChangeNotification : public ChangeTest
{
protected:
    /// Tells of a unit that many bytes long.
    Notifications change(std::vector<unsigned char> before, std::vector<unsigned char> after)
    {
        unitDataChange(int(before.size()), before.data(), after.data(), 0);
        return takeNotifications();
    }
};

} // namespace

TEST_F(ChangeNotification, ABitIsReportedByItsOwnMarkAlone)
{
    for (int address : {12, -3}) {
        for (unsigned flags : {1u, 0xFFFFFFFFu}) {
            putV(address, flags, flags);
            EXPECT_EQ(Notifications({told("V", address)}), bitChange());
        }
        putV(address, 0xFFFFFFFEu, 0xFFFFFFFFu);
        EXPECT_EQ(Notifications(), bitChange());
    }
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

TEST_F(ChangeNotification, AByteAtZeroCanBeTheFirstByteOfAValueAndNoLaterOne)
{
    putV(0, 1u << 2 | 1u << 4);
    EXPECT_EQ(Notifications(), byteChange(0, 1));
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

TEST_F(ChangeNotification, AUnitIsToldOfByItsWidthLowByteFirst)
{
    putV(10, 3, 0xFFFFFFFFu);
    EXPECT_EQ(
        Notifications({told("V_bit", 80), told("V_bit", 87), told("V_B", 10), told("V_W", 10)}),
        change({0x01}, {0x80}));
    EXPECT_EQ(Notifications({told("V_bit", 174), told("V", 10), told("V_D", 10)}),
              change({0x01, 0x00}, {0x01, 0x40}));
    EXPECT_EQ(Notifications({told("V_bit", 336), told("V_bit", 351), told("V", 10)}),
              change({0x01, 0x00, 0x00, 0x80}, {0x01, 0x00, 0x01, 0x00}));
}

TEST_F(ChangeNotification, AUnitIsToldOfOnceUnderTheNameOfItsVariable)
{
    struct
    {
        unsigned marks;
        Notifications ofByte;
        Notifications ofWord;
        Notifications ofDouble;
    } const rows[] = {
        {0, {}, {}, {}},
        {1, {told("V_B", 9)}, {told("V", 9)}, {told("V", 9)}},
        {2, {told("V_W", 9)}, {told("V_D", 9)}, {}},
        {3, {told("V_B", 9), told("V_W", 9)}, {told("V", 9), told("V_D", 9)}, {told("V", 9)}},
        {4, {told("V_W", 8)}, {told("V_D", 8)}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.marks);
        putV(9, row.marks);
        EXPECT_EQ(row.ofByte, change({0}, {1}));
        EXPECT_EQ(row.ofWord, change({0, 0}, {1, 0}));
        EXPECT_EQ(row.ofDouble, change({0, 0, 0, 0}, {1, 0, 0, 0}));
    }
}

TEST_F(ChangeNotification, AMonitoredBitIsToldOfBesideItsUnit)
{
    putV(9, 1, 1);
    EXPECT_EQ(Notifications({told("V_bit", 72), told("V_B", 9)}), change({0}, {1}));
    EXPECT_EQ(Notifications({told("V_bit", 144), told("V", 9)}), change({0, 0}, {1, 0}));
    EXPECT_EQ(Notifications({told("V_bit", 288), told("V", 9)}),
              change({0, 0, 0, 0}, {1, 0, 0, 0}));
}
