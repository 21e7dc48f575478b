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

struct RequestRow
{
    const char* area;
    int addr;
    int count;
    int unitMode;
    const char* blocks;
};

} // namespace

class OneShotRead : public DriverTest
{
protected:
    OneShotRead()
    {
        initialise(3, 100);
    }
};

TEST_F(OneShotRead, ARequestIsCutByTheLimitOfItsUnitMode)
{
    const RequestRow rows[] = {
        {"MW", 0, 300, WORDS, "1 MW 0 x100, 1 MW 100 x100, 1 MW 200 x100"},
        {"MW", 0, 100, WORDS, "1 MW 0 x100"},
        {"MW", 0, 101, WORDS, "1 MW 0 x100, 1 MW 100 x1"},
        // 8 x 100 groups a block, and each group is 16 bits.
        {"IX", 0, 800, BITS, "1 IX 0 x12800"},
        {"IX", 0, 801, BITS, "1 IX 0 x12800, 1 IX 800 x16"},
        // The unit mode and not the area chooses the limit.
        {"IX", 0, 101, WORDS, "1 IX 0 x1600, 1 IX 100 x16"},
        {"IX", 0, 101, BITS, "1 IX 0 x1616"},
        {"MW", 3000, 101, WORDS, "1 MW 3000 x100, 1 MW 3100 x1"},
        {"MW", 3000, 101, BITS, "1 MW 3000 x101"},
        // Counts of bit areas are groups of sixteen, counts of word areas stay.
        {"MX", 16, 4, BITS, "1 MX 16 x64"},
        {"QX", 0, 2, BITS, "1 QX 0 x32"},
        {"IW", 0, 8, WORDS, "1 IW 0 x8"},
        {"QW", 0, 9, WORDS, "1 QW 0 x9"},
        // A request without units queues one block.
        {"MW", 3000, 0, WORDS, "1 MW 3000 x0"},
        {"MX", 3000, -2, BITS, "1 MX 3000 x-32"},
    };
    for (const RequestRow& row : rows) {
        driver.condReadList.clear();
        EXPECT_EQ(1, request(row.area, row.addr, row.count, row.unitMode));
        EXPECT_EQ(row.blocks, blockLine(queued())) << row.count << ", mode " << row.unitMode;
    }
}

TEST_F(OneShotRead, EveryBlockCarriesTheHostsIdAndTheLastIsRemembered)
{
    request("MW", 0, 250, WORDS, 77);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(77, queued().at(i).varId) << i;
    EXPECT_EQ("1 MW 200 x50", blockText(driver.condVar));
    EXPECT_EQ(77, driver.condVar.varId);
    request("MX", 3000, 1, BITS, 78);
    EXPECT_EQ("1 MX 3000 x16", blockText(driver.condVar));
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
    EXPECT_EQ("1 MW 3000 x2, 1 MW 3000 x2", blockLine(queued()));
    EXPECT_EQ(1, queued().at(0).varId);
    EXPECT_EQ(2, queued().at(1).varId);
}

TEST_F(OneShotRead, AFullQueueTakesTheNewestInPlaceOfItsLast)
{
    initialise(3, 1);
    for (int before : {CAPACITY - 1, int(CAPACITY)}) {
        SCOPED_TRACE(before);
        driver.condReadList.clear();
        request("MW", 0, before);
        request("IW", 7, 1);
        ASSERT_EQ(int(CAPACITY), int(queued().size()));
        EXPECT_EQ("1 MW 511 x1", blockText(queued().at(511)));
        EXPECT_EQ("1 IW 7 x1", blockText(queued().at(512)));
        EXPECT_EQ("1 IW 7 x1", blockText(driver.condVar));
    }
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

TEST_F(OneShotRead, ARequestForABitOfAUnitOrAnUnknownAreaQueuesNothing)
{
    request("IW", 7, 1);
    for (const char* name : {"MW_bit", "MX_bit", "ZZ_bit", "ZZ", "mw", ""}) {
        for (int unitMode : {BITS, WORDS}) {
            SCOPED_TRACE(name);
            EXPECT_EQ(1, request(name, 3000, 300, unitMode));
            EXPECT_EQ("1 IW 7 x1", blockLine(queued()));
            EXPECT_EQ("1 IW 7 x1", blockText(driver.condVar));
        }
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
