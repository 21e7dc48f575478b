#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

enum { BITS = -1, WORDS = 0, CAPACITY = 513 };

int request(const char* area, int addr, int count, int unitMode = WORDS, int varId = 9)
{
    KEY_ADDRESS wanted = key(1, area, addr, count, unitMode);
    return intf_addConditionRead(wanted, varId);
}

const QList<VARIABLE>& queued()
{
    return driver.condReadList;
}

} // namespace

class OneShotRead : public DriverTest
{
protected:
    OneShotRead()
    {
        initialise(3, 100);
    }
};

TEST_F(OneShotRead, AWordRequestIsCutByTheWordLimit)
{
    EXPECT_EQ(1, request("MW", 0, 300));
    EXPECT_EQ((Texts{"1 MW 0 x100", "1 MW 100 x100", "1 MW 200 x100"}), blocksOf(queued()));
}

TEST_F(OneShotRead, AWordRequestOfTheLimitIsOneBlock)
{
    request("MW", 0, 100);
    EXPECT_EQ(Texts{"1 MW 0 x100"}, blocksOf(queued()));
}

TEST_F(OneShotRead, AWordRequestOneWordBeyondTheLimitIsTwoBlocks)
{
    request("MW", 0, 101);
    EXPECT_EQ((Texts{"1 MW 0 x100", "1 MW 100 x1"}), blocksOf(queued()));
}

TEST_F(OneShotRead, ABitRequestOfTheLimitIsOneBlock)
{
    request("IX", 0, 800, BITS);
    EXPECT_EQ(Texts{"1 IX 0 x12800"}, blocksOf(queued()));
}

TEST_F(OneShotRead, ABitRequestIsCutByTheBitLimit)
{
    // 8 x 100 groups a block, and each group is 16 bits.
    EXPECT_EQ(1, request("IX", 0, 801, BITS));
    EXPECT_EQ((Texts{"1 IX 0 x12800", "1 IX 800 x16"}), blocksOf(queued()));
}

TEST_F(OneShotRead, TheUnitModeAndNotTheAreaChoosesTheLimit)
{
    request("IX", 0, 101, WORDS);
    request("IX", 0, 101, BITS);
    EXPECT_EQ((Texts{"1 IX 0 x1600", "1 IX 100 x16", "1 IX 0 x1616"}), blocksOf(queued()));
    driver.condReadList.clear();
    request("MW", 3000, 101, WORDS);
    request("MW", 3000, 101, BITS);
    EXPECT_EQ((Texts{"1 MW 3000 x100", "1 MW 3100 x1", "1 MW 3000 x101"}), blocksOf(queued()));
}

TEST_F(OneShotRead, CountsOfBitAreasAreGroupsOfSixteen)
{
    request("MX", 16, 4, BITS);
    request("IX", 0, 1, BITS);
    request("QX", 0, 2, BITS);
    EXPECT_EQ((Texts{"1 MX 16 x64", "1 IX 0 x16", "1 QX 0 x32"}), blocksOf(queued()));
}

TEST_F(OneShotRead, CountsOfWordAreasStay)
{
    request("MW", 3000, 7);
    request("IW", 0, 8);
    request("QW", 0, 9);
    EXPECT_EQ((Texts{"1 MW 3000 x7", "1 IW 0 x8", "1 QW 0 x9"}), blocksOf(queued()));
}

TEST_F(OneShotRead, EveryBlockCarriesTheHostsId)
{
    request("MW", 0, 200, WORDS, 77);
    EXPECT_EQ(77, queued().at(0).varId);
    EXPECT_EQ(77, queued().at(1).varId);
}

TEST_F(OneShotRead, TheBlockQueuedLastIsRemembered)
{
    request("MW", 0, 250, WORDS, 77);
    EXPECT_EQ("1 MW 200 x50", blockText(driver.condVar));
    EXPECT_EQ(77, driver.condVar.varId);
    request("MX", 3000, 1, BITS, 78);
    EXPECT_EQ("1 MX 3000 x16", blockText(driver.condVar));
}

TEST_F(OneShotRead, ARequestWithoutUnitsQueuesOneBlock)
{
    EXPECT_EQ(1, request("MW", 3000, 0));
    EXPECT_EQ(1, request("MX", 3000, -2, BITS));
    EXPECT_EQ((Texts{"1 MW 3000 x0", "1 MX 3000 x-32"}), blocksOf(queued()));
}

TEST_F(OneShotRead, ARepeatedRequestBehindTheHeadIsRefreshed)
{
    request("IW", 0, 1);
    request("MW", 3000, 2, WORDS, 1);
    driver.condReadList[1].value[0] = 0xAA;
    request("QW", 0, 1);
    request("MW", 3000, 2, WORDS, 2);
    EXPECT_EQ((Texts{"1 IW 0 x1", "1 MW 3000 x2", "1 QW 0 x1"}), blocksOf(queued()));
    EXPECT_EQ(2, queued().at(1).varId);
    EXPECT_EQ(0, queued().at(1).value[0]);
    EXPECT_EQ("1 MW 3000 x2", blockText(driver.condVar));
    EXPECT_EQ(2, driver.condVar.varId);
}

TEST_F(OneShotRead, ARepeatedRequestAtTheHeadIsQueuedAgain)
{
    request("MW", 3000, 2, WORDS, 1);
    request("MW", 3000, 2, WORDS, 2);
    EXPECT_EQ((Texts{"1 MW 3000 x2", "1 MW 3000 x2"}), blocksOf(queued()));
    EXPECT_EQ(1, queued().at(0).varId);
    EXPECT_EQ(2, queued().at(1).varId);
}

TEST_F(OneShotRead, OfTwoEqualEntriesTheNewerIsRefreshed)
{
    for (int i = 0; i < 3; ++i)
        driver.condReadList.append(variable(1, "MW", 3000, 2));
    request("MW", 3000, 2, WORDS, 5);
    ASSERT_EQ(3, int(queued().size()));
    EXPECT_EQ(0, queued().at(1).varId);
    EXPECT_EQ(5, queued().at(2).varId);
}

TEST_F(OneShotRead, EntriesThatDifferInAnyPartOfTheKeyStay)
{
    driver.condReadList.append(variable(1, "QX", 0, 1));
    driver.condReadList.append(variable(2, "MW", 3000, 2));
    driver.condReadList.append(variable(1, "IW", 3000, 2));
    driver.condReadList.append(variable(1, "MW", 3001, 2));
    driver.condReadList.append(variable(1, "MW", 3000, 3));
    request("MW", 3000, 2);
    ASSERT_EQ(6, int(queued().size()));
    EXPECT_EQ("1 MW 3000 x2", blockText(queued().at(5)));
}

TEST_F(OneShotRead, AQueueOneBlockShortOfItsCapacityGrows)
{
    initialise(3, 1);
    request("MW", 0, CAPACITY - 1);
    request("IW", 7, 1);
    ASSERT_EQ(int(CAPACITY), int(queued().size()));
    EXPECT_EQ("1 MW 511 x1", blockText(queued().at(511)));
    EXPECT_EQ("1 IW 7 x1", blockText(queued().at(512)));
}

TEST_F(OneShotRead, AFullQueueTakesTheNewestInPlaceOfItsLast)
{
    initialise(3, 1);
    request("MW", 0, CAPACITY);
    ASSERT_EQ(int(CAPACITY), int(queued().size()));
    ASSERT_EQ("1 MW 512 x1", blockText(queued().at(512)));

    request("IW", 7, 1);
    EXPECT_EQ(int(CAPACITY), int(queued().size()));
    EXPECT_EQ("1 IW 7 x1", blockText(queued().at(512)));
    EXPECT_EQ("1 MW 511 x1", blockText(queued().at(511)));
    EXPECT_EQ("1 IW 7 x1", blockText(driver.condVar));
}

TEST_F(OneShotRead, ARequestLongerThanTheQueueKeepsItsLastBlock)
{
    initialise(3, 1);
    request("MW", 0, 600);
    ASSERT_EQ(int(CAPACITY), int(queued().size()));
    EXPECT_EQ("1 MW 0 x1", blockText(queued().at(0)));
    EXPECT_EQ("1 MW 511 x1", blockText(queued().at(511)));
    EXPECT_EQ("1 MW 599 x1", blockText(queued().at(512)));
}

TEST_F(OneShotRead, AFullQueueStillRefreshesAnEqualEntry)
{
    initialise(3, 1);
    request("MW", 0, CAPACITY, WORDS, 1);
    request("MW", 1, 1, WORDS, 2);
    EXPECT_EQ(2, queued().at(1).varId);
    EXPECT_EQ("1 MW 512 x1", blockText(queued().at(512)));
}

TEST_F(OneShotRead, ARepeatOfTheHeadOfAFullQueueReplacesTheLast)
{
    initialise(3, 1);
    request("MW", 0, CAPACITY, WORDS, 1);
    request("MW", 0, 1, WORDS, 2);
    EXPECT_EQ(int(CAPACITY), int(queued().size()));
    EXPECT_EQ(1, queued().at(0).varId);
    EXPECT_EQ("1 MW 0 x1", blockText(queued().at(512)));
}

TEST_F(OneShotRead, ARequestForABitOfAUnitQueuesNothing)
{
    request("IW", 7, 1);
    for (const char* name : {"MW_bit", "MX_bit", "ZZ_bit"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(1, request(name, 3000, 300, BITS));
        EXPECT_EQ(Texts{"1 IW 7 x1"}, blocksOf(queued()));
        EXPECT_EQ("1 IW 7 x1", blockText(driver.condVar));
    }
}

TEST_F(OneShotRead, ARequestForAnUnknownAreaQueuesNothing)
{
    for (const char* name : {"ZZ", "mw", ""}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(1, request(name, 3000, 300));
        EXPECT_EQ(Texts{}, blocksOf(queued()));
        EXPECT_EQ("0  0 x0", blockText(driver.condVar));
    }
}

TEST_F(OneShotRead, WithoutABlockLimitARequestPassesWhole)
{
    initialise(3, 0);
    request("MW", 3000, 300);
    request("MX", 3000, 300, BITS);
    EXPECT_EQ((Texts{"1 MW 3000 x300", "1 MX 3000 x4800"}), blocksOf(queued()));
}

TEST_F(OneShotRead, HugeCountsAndAddressesWrapAround)
{
    initialise(3, 0);
    request("MW", INT_MAX, INT_MAX);
    request("MX", INT_MIN, INT_MAX, BITS);
    // 16 x (2^31 - 1) leaves -16 in 32 bits.
    EXPECT_EQ((Texts{"1 MW 2147483647 x2147483647", "1 MX -2147483648 x-16"}), blocksOf(queued()));
}

TEST_F(OneShotRead, TheHostsKeyIsLeftAsItIs)
{
    // More than 64 blocks of 800 groups, which are cut up in several parts.
    KEY_ADDRESS wanted = key(1, "MX", 3000, 60000, BITS);
    intf_addConditionRead(wanted, 9);
    EXPECT_EQ("1 MX 3000 x60000", blockText(wanted));
    EXPECT_EQ(int(BITS), wanted.unitMode);
}

TEST_F(OneShotRead, NothingIsReportedWhenARequestIsQueued)
{
    request("MW", 3000, 1);
    EXPECT_TRUE(takeNotifications().empty());
}
