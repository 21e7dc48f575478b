#include "changeTest.h"

class UnitDataChange : public ChangeTest
{
protected:
    /// Bit 0 of the unit, `bytes` long, goes from 0 to 1.
    Notifications change(int bytes)
    {
        const unsigned char before[IMAGE_BYTES] = {0, 0, 0, 0};
        const unsigned char after[IMAGE_BYTES] = {1, 0, 0, 0};
        unitDataChange(bytes, before, after, 0);
        return takeNotifications();
    }
};

TEST_F(UnitDataChange, OfAPlainVariableIsToldOnceUnderItsAreasName)
{
    putV(9, 1);
    EXPECT_EQ(Notifications({told("V", 9)}), change(2));
    EXPECT_EQ(Notifications({told("V", 9)}), change(4));
}

TEST_F(UnitDataChange, OfAByteHasANameOfItsOwn)
{
    putV(9, 1);
    EXPECT_EQ(Notifications({told("V_B", 9)}), change(1));
}

TEST_F(UnitDataChange, OfNoVariableIsNotTold)
{
    putV(9, 0);
    for (int bytes : {1, 2, 4})
        EXPECT_EQ(Notifications(), change(bytes)) << bytes;
}

TEST_F(UnitDataChange, OfAMonitoredBitIsToldBesideTheUnit)
{
    putV(9, 1, 1);
    EXPECT_EQ(Notifications({told("V_bit", 144), told("V", 9)}), change(2));
    EXPECT_EQ(Notifications({told("V_bit", 288), told("V", 9)}), change(4));
}

TEST_F(UnitDataChange, OfAPartOfAWiderValueIsToldAsThatValue)
{
    putV(9, 2);
    EXPECT_EQ(Notifications({told("V_D", 9)}), change(2));
    putV(9, 4);
    EXPECT_EQ(Notifications({told("V_D", 8)}), change(2));
    putV(9, 3);
    EXPECT_EQ(Notifications({told("V", 9), told("V_D", 9)}), change(2));
}
