#include "cacheHelpers.h"
#include "serviceForProtocol.h"

class SharedName : public DriverTest
{
};

namespace {

const char* const AREAS[] = {"MW", "IW", "QW", "MX", "IX", "QX"};

} // namespace

TEST_F(SharedName, OfAnAreaIsTheTablesOwnText)
{
    for (int i = 0; i < AREA_COUNT; ++i) {
        const QString name = text(AREAS[i]);
        EXPECT_EQ(name, sharedName(name));
        EXPECT_TRUE(sharedName(name).isSharedWith(areaName(i))) << AREAS[i];
    }
}

TEST_F(SharedName, OfAnyOtherNameIsThatName)
{
    for (const char* other : {"", "mw", "MW_bit", "MW ", "XX"}) {
        const QString name = text(other);
        EXPECT_EQ(name, sharedName(name));
    }
}

TEST_F(SharedName, IsWhatCachedUnitsKeepInsteadOfTheHostsText)
{
    unsigned char value[2];
    for (int address : {3000, 3001})
        intf_getData(1, text("MW"), address, 1, value);
    ASSERT_EQ(2, int(driver.dataAreas.size()));
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(driver.dataAreas.at(i).regName.isSharedWith(areaName(0)));
}

TEST_F(SharedName, IsWhatPolledBlocksKeepInsteadOfTheHostsText)
{
    initialise();
    QList<KEY_ADDRESS> keys{key(1, "QX", 3, 1, -1)};
    intf_addrMerge(keys);
    ASSERT_EQ(1, int(driver.readList.size()));
    EXPECT_TRUE(driver.readList.at(0).regName.isSharedWith(areaName(5)));
}
