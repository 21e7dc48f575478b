#include "driverFixture.h"

#include <climits>

class Initialisation : public DriverTest
{
protected:
    int initialiseWith(const char* properties)
    {
        QByteArray writable(properties);
        return intf_initProperty(shared.data(), 0x1234, recipe.data(), &status, writable.data(),
                                 &hostMutex);
    }

    void expectNumbers(int context, int localOnly, int propC, int retryLimit, int mergeLimit)
    {
        EXPECT_EQ(context, driver.callbackContext);
        EXPECT_EQ(localOnly, driver.localOnly);
        EXPECT_EQ(propC, driver.propC);
        EXPECT_EQ(retryLimit, driver.retryLimit);
        EXPECT_EQ(mergeLimit, driver.mergeLimit);
    }

    int status = -1;
};

namespace {

void fillLists()
{
    driver.readList.append(variable(1, "MW", 3000, 1));
    driver.writeList.append(variable(1, "MW", 3001, 1));
    driver.condReadList.append(variable(1, "MW", 3002, 1));
    driver.frameQueue.append(FRAME_PRO());
    putUnit(1, "MW", 3000, 5);
}

void expectListsEmpty()
{
    EXPECT_TRUE(driver.readList.isEmpty());
    EXPECT_TRUE(driver.writeList.isEmpty());
    EXPECT_TRUE(driver.condReadList.isEmpty());
    EXPECT_TRUE(driver.frameQueue.isEmpty());
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

} // namespace

TEST_F(Initialisation, ReturnsOneAndSetsTheStatusToZero)
{
    EXPECT_EQ(1, initialiseWith("0#0#0#3#32"));
    EXPECT_EQ(0, status);
}

TEST_F(Initialisation, LimitIsTheLengthOfWordBlocksAndAnEighthOfThatOfBitBlocks)
{
    struct
    {
        const char* properties;
        int words;
        int bits;
    } const rows[] = {
        {"0#0#0#3#32", 32, 256},
        {"0#0#0#3#-4", -4, -32},
        {"0#0#0#3#268435455", 268435455, INT_MAX - 7},
        {"0#0#0#3#268435456", 268435456, INT_MIN}, // 2^28 * 8 = 2^31
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.properties);
        initialiseWith(row.properties);
        EXPECT_EQ(row.words, driver.mergeLimit);
        EXPECT_EQ(row.words, driver.maxWordBlockLen);
        EXPECT_EQ(row.bits, driver.maxBitBlockLen);
    }
}

TEST_F(Initialisation, FourPartsChangeNoneOfTheFiveNumbers)
{
    initialiseWith("11#12#13#14#15");
    initialiseWith("1#2#3#4");
    expectNumbers(11, 12, 13, 14, 15);
    EXPECT_EQ(120, driver.maxBitBlockLen);
    initialiseWith("1#2#3#4#");
    expectNumbers(1, 2, 3, 4, 0);
}

TEST_F(Initialisation, FourPartsAfterLoadLeaveZeros)
{
    initialiseWith("1#2#3#4");
    expectNumbers(0, 0, 0, 0, 0);
    EXPECT_EQ(0, driver.maxBitBlockLen);
    EXPECT_EQ(0, driver.maxWordBlockLen);
}

TEST_F(Initialisation, FourPartsStillStoreThePointersAndClearTheLists)
{
    fillLists();
    EXPECT_EQ(1, initialiseWith("1#2#3#4"));
    EXPECT_EQ(0, status);
    EXPECT_EQ(shared.data(), driver.hostShared);
    EXPECT_EQ(recipe.data(), driver.rcpBuffer);
    EXPECT_EQ(&hostMutex, driver.hostMutex);
    EXPECT_EQ(0x1234u, driver.hostArg1);
    expectListsEmpty();
}

TEST_F(Initialisation, TakesFiveNumbersInOrderFromFivePartsOrMore)
{
    struct
    {
        const char* properties;
        int numbers[5];
    } const rows[] = {
        {"11#12#13#14#15", {11, 12, 13, 14, 15}},
        {"", {11, 12, 13, 14, 15}}, // too few parts change nothing
        {"21#22#23#24#25#16#17", {21, 22, 23, 24, 25}},
        {"11##13##15", {11, 0, 13, 0, 15}},
        {"####", {0, 0, 0, 0, 0}},
        {" 11 #-12#+13#0014#2147483647", {11, -12, 13, 14, 2147483647}},
        {"11#12#13#14#15#\xC3#\xE2\x82", {11, 12, 13, 14, 15}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.properties);
        initialiseWith(row.properties);
        const int* n = row.numbers;
        expectNumbers(n[0], n[1], n[2], n[3], n[4]);
    }
}

// Latin-1 has a character for every byte. Read as UTF-8, 11 behind a mark of the byte order and 11
// before a blank would be numbers.
TEST_F(Initialisation, TextThatIsNotANumberGivesZero)
{
    for (const char* notANumber :
         {"x", "12x", "x12", "3.5", "0x10", "1 2", "--1", "99999999999", "2147483648", "\xE9",
          "\xEF\xBB\xBF"
          "11",
          "11\xC2\xA0", "\x80", "11\xFF"}) {
        SCOPED_TRACE(notANumber);
        driver.callbackContext = 55;
        initialiseWith((std::string(notANumber) + "#2#3#4#5").c_str());
        expectNumbers(0, 2, 3, 4, 5);
    }
}

TEST_F(Initialisation, PropertyTextStaysAsItWas)
{
    QByteArray properties("11#12#13#14#15");
    intf_initProperty(shared.data(), 0, recipe.data(), &status, properties.data(), &hostMutex);
    EXPECT_EQ("11#12#13#14#15", properties.toStdString());
}

TEST_F(Initialisation, SecondArgumentIsKeptUnchanged)
{
    QByteArray properties("0#0#0#3#32");
    intf_initProperty(shared.data(), -2, recipe.data(), &status, properties.data(), &hostMutex);
    EXPECT_EQ(0xFFFFFFFEu, driver.hostArg1);
}

TEST_F(Initialisation, DropsPlansWritesFramesAndCache)
{
    initialiseWith("0#0#0#3#32");
    fillLists();
    initialiseWith("0#0#0#3#32");
    expectListsEmpty();
}

TEST_F(Initialisation, ResetsTheEngine)
{
    driver.frameKind = FRAME_RECIPE_UPLOAD;
    driver.priorityCount = 4;
    driver.handshakePending = 1;
    driver.failCount = 2;
    driver.commFailed = 1;
    driver.frameIndex = 3;
    driver.initFlag = 0;
    initialiseWith("0#0#0#3#32");
    EXPECT_EQ(0, driver.frameKind);
    EXPECT_EQ(0, driver.priorityCount);
    EXPECT_EQ(0, driver.handshakePending);
    EXPECT_EQ(0, driver.failCount);
    EXPECT_EQ(0, driver.commFailed);
    EXPECT_EQ(0, driver.frameIndex);
    EXPECT_EQ(1, driver.initFlag);
}

TEST_F(Initialisation, KeepsTheRecipeSetAndItsPosition)
{
    driver.rcpVars.append(recipeVariable(7, 1, "MW", 3000, 2, 0));
    driver.rcpVarsStaged.append(recipeVariable(7, 1, "MW", 3000, 1, 0));
    driver.rcpVarsStaged.append(recipeVariable(7, 1, "MW", 3001, 1, 1));
    driver.blockStartIndex.append(0);
    driver.rcpIndex = 1;
    initialiseWith("0#0#0#3#32");
    EXPECT_EQ(1, int(driver.rcpVars.size()));
    EXPECT_EQ(2, int(driver.rcpVarsStaged.size()));
    EXPECT_EQ(1, int(driver.blockStartIndex.size()));
    EXPECT_EQ(1, driver.rcpIndex);
}

TEST_F(Initialisation, KeepsTheCurrentAndTheConditionalVariable)
{
    driver.curVar = variable(2, "MW", 3005, 6);
    driver.condVar = variable(3, "IX", 16, 8);
    initialiseWith("0#0#0#3#32");
    EXPECT_EQ(2, driver.curVar.station);
    EXPECT_EQ("MW", driver.curVar.regName.toStdString());
    EXPECT_EQ(3005, driver.curVar.addr);
    EXPECT_EQ(6, driver.curVar.count);
    EXPECT_EQ(3, driver.condVar.station);
    EXPECT_EQ("IX", driver.condVar.regName.toStdString());
    EXPECT_EQ(16, driver.condVar.addr);
    EXPECT_EQ(8, driver.condVar.count);
}

TEST_F(Initialisation, KeepsTheCallBackAndThePropertyPage)
{
    const ValueChangeCallBack before = driver.valueChangeCallBack;
    driver.propertyPage = text("1_2");
    initialiseWith("0#0#0#3#32");
    EXPECT_TRUE(before != nullptr && driver.valueChangeCallBack == before);
    EXPECT_EQ("1_2", driver.propertyPage.toStdString());
}

TEST_F(Initialisation, LeavesTheHostsBlocksAsTheyAre)
{
    shared[RECIPE_DOWNLOAD_FLAG] = 1;
    shared[RECIPE_UPLOAD_FLAG] = 1;
    recipe[0] = 9;
    initialiseWith("0#0#0#3#32");
    EXPECT_EQ(1, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(9, recipe[0]);
}

TEST_F(Initialisation, NullPointersAreLeftAlone)
{
    initialiseWith("11#12#13#14#15");
    fillLists();
    EXPECT_EQ(1, intf_initProperty(nullptr, 0, nullptr, nullptr, nullptr, nullptr));
    expectNumbers(11, 12, 13, 14, 15);
    EXPECT_TRUE(driver.hostShared == nullptr);
    EXPECT_TRUE(driver.rcpBuffer == nullptr);
    EXPECT_TRUE(driver.hostMutex == nullptr);
    expectListsEmpty();
}
