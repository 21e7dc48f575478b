#include "dataAreas.h"
#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

int plan(QList<KEY_ADDRESS> keys)
{
    return intf_addrMerge(keys);
}

Texts readBlocks()
{
    return blocksOf(driver.readList);
}

/// "station area address" of each marked unit, in the order in which they were first marked.
Texts markedUnits()
{
    Texts out;
    for (int i = 0; i < int(driver.dataAreas.size()); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        if (unit.monitorFlags == 0) continue;
        out.push_back(std::to_string(unit.station) + " " + unit.regName.toStdString() + " " +
                      std::to_string(unit.address));
    }
    return out;
}

} // namespace

class CyclicPlan : public DriverTest
{
protected:
    CyclicPlan()
    {
        initialise();
    }
};

TEST_F(CyclicPlan, MergedBlocksBecomeTheReadListWithTheIdOfMergedBlocks)
{
    EXPECT_EQ(2, plan({key(1, "IX", 4, 1), key(2, "MW", 3000, 2), key(1, "IX", 3, 1)}));
    EXPECT_EQ((Texts{"1 IX 3 x2", "2 MW 3000 x2"}), readBlocks());
    EXPECT_EQ(4, driver.readList.at(0).varId);
    EXPECT_EQ(4, driver.readList.at(1).varId);
}

TEST_F(CyclicPlan, TheMergeLimitIsThatOfTheProperties)
{
    const QList<KEY_ADDRESS> five{key(1, "IX", 0, 1), key(1, "IX", 1, 1), key(1, "IX", 2, 1),
                                  key(1, "IX", 3, 1), key(1, "IX", 4, 1)};
    initialise(3, 5);
    EXPECT_EQ(1, plan(five));
    EXPECT_EQ(Texts{"1 IX 0 x5"}, readBlocks());
    initialise(3, 4);
    EXPECT_EQ(2, plan(five));
    EXPECT_EQ((Texts{"1 IX 0 x4", "1 IX 4 x1"}), readBlocks());
}

TEST_F(CyclicPlan, KeysOfSuffixedOrUnknownNamesAreDroppedAndMarkNothing)
{
    EXPECT_EQ(1, plan({key(1, "MW_BIT", 3000, 1), key(1, "MX_bit", 3000, 1), key(1, "ZZ", 0, 1),
                       key(1, "ZZ", INT_MAX, INT_MAX), key(1, "QW", 5, 1)}));
    EXPECT_EQ(Texts{"1 QW 5 x1"}, readBlocks());
    EXPECT_EQ(Texts{"1 QW 5"}, markedUnits());
    EXPECT_EQ(1, int(driver.dataAreas.size()));
}

TEST_F(CyclicPlan, AListWithoutAKnownKeyEndsReadingAndMarking)
{
    for (const QList<KEY_ADDRESS>& keys :
         {QList<KEY_ADDRESS>{key(1, "ZZ", 0, 1), key(1, "MW_W", 3000, 1)}, QList<KEY_ADDRESS>()}) {
        plan({key(1, "QW", 5, 1)});
        EXPECT_EQ(0, plan(keys));
        EXPECT_EQ(Texts{}, readBlocks());
        EXPECT_EQ(Texts{}, markedUnits());
    }
}

TEST_F(CyclicPlan, ALaterCallReplacesThePlanAndTheMarks)
{
    plan({key(1, "QW", 5, 1)});
    EXPECT_EQ(1, plan({key(1, "IW", 6, 1)}));
    EXPECT_EQ(Texts{"1 IW 6 x1"}, readBlocks());
    EXPECT_EQ(Texts{"1 IW 6"}, markedUnits());
}

TEST_F(CyclicPlan, EveryUnitOfAKeyIsMarkedAsAVariable)
{
    plan({key(1, "MW", 3010, 3), key(2, "IX", 7, 1)});
    EXPECT_EQ((Texts{"1 MW 3010", "1 MW 3011", "1 MW 3012", "2 IX 7"}), markedUnits());
    EXPECT_EQ(1u << MONITOR_UNIT, cachedUnit(1, "MW", 3012).monitorFlags);
    EXPECT_EQ(0u, cachedUnit(1, "MW", 3012).bitMonitorMask);
}

TEST_F(CyclicPlan, UnitsInAGapThatIsReadAlongAreNotMarked)
{
    ASSERT_EQ(1, plan({key(1, "IX", 3, 1), key(1, "IX", 0, 1)}));
    EXPECT_EQ(Texts{"1 IX 0 x4"}, readBlocks());
    EXPECT_EQ((Texts{"1 IX 3", "1 IX 0"}), markedUnits());
}

TEST_F(CyclicPlan, FormerMarksAndPendingBitWritesAreForgotten)
{
    const int index = putUnit(1, "MW", 3000, 0x1234, 0xFFFFFFFFu, 0xFFFFFFFFu);
    driver.dataAreas[index].pendingBitWrites = 0xFFFFFFFFu;
    plan({});
    EXPECT_EQ(0u, driver.dataAreas.at(index).monitorFlags);
    EXPECT_EQ(0u, driver.dataAreas.at(index).bitMonitorMask);
    EXPECT_EQ(0u, driver.dataAreas.at(index).pendingBitWrites);
}

TEST_F(CyclicPlan, CachedValuesSurvive)
{
    const int index = putUnit(1, "MW", 3000, 0x1234);
    driver.dataAreas[index].writeImage[0] = 0x56;
    driver.dataAreas[index].writePending = 1;
    plan({key(1, "MW", 3000, 1)});
    EXPECT_EQ(0x34, driver.dataAreas.at(index).readImage[0]);
    EXPECT_EQ(0x12, driver.dataAreas.at(index).readImage[1]);
    EXPECT_EQ(0x56, driver.dataAreas.at(index).writeImage[0]);
    EXPECT_EQ(1, driver.dataAreas.at(index).writePending);
}

TEST_F(CyclicPlan, TheHostsListIsLeftAsItIs)
{
    QList<KEY_ADDRESS> keys{key(2, "IX", 4, 1), key(1, "ZZ", 0, 1), key(2, "IX", 3, 1)};
    intf_addrMerge(keys);
    EXPECT_EQ((Texts{"2 IX 4 x1", "1 ZZ 0 x1", "2 IX 3 x1"}), blocksOf(keys));
}

TEST_F(CyclicPlan, KeysWithoutUnitsMarkNothingAndStayInThePlan)
{
    EXPECT_EQ(2, plan({key(1, "MW", 3000, -2), key(1, "IX", 5, INT_MIN)}));
    EXPECT_EQ((Texts{"1 MW 3000 x-2", "1 IX 5 x-2147483648"}), readBlocks());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(CyclicPlan, AddressesAtBothEndsOfTheNumbersArePlanned)
{
    EXPECT_EQ(2, plan({key(0, "IX", INT_MAX, 1), key(0, "IX", INT_MIN, 1)}));
    EXPECT_EQ((Texts{"0 IX 2147483647", "0 IX -2147483648"}), markedUnits());
}

TEST_F(CyclicPlan, OtherListsAreLeftAlone)
{
    driver.writeList.append(variable(1, "MW", 3000, 1));
    driver.condReadList.append(variable(1, "IW", 0, 1));
    driver.blockStartIndex.append(42);
    plan({key(1, "QW", 5, 1)});
    EXPECT_EQ(1, int(driver.writeList.size()));
    EXPECT_EQ(1, int(driver.condReadList.size()));
    EXPECT_EQ(std::vector<int>{42}, numbersOf(driver.blockStartIndex));
    EXPECT_TRUE(takeNotifications().empty());
}
