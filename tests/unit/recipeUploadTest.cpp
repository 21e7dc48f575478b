#include "recipeUpload.h"
#include "cacheHelpers.h"
#include "replyDecoding.h"

namespace {

enum { STATION = 2, UNTOUCHED = 0xEE, GUARD = 16, BUFFER_WORDS = 64 };

/// A recipe buffer with guard bytes on both sides, all UNTOUCHED.
class RecipeUploadDecoding : public DriverTest
{
protected:
    RecipeUploadDecoding() : block(GUARD + 2 * BUFFER_WORDS + GUARD, UNTOUCHED), expected(block)
    {
        driver.callbackContext = CONTEXT;
        driver.frameKind = FRAME_RECIPE_UPLOAD;
        driver.rcpBuffer = block.data() + GUARD;
        driver.blockStartIndex.append(0);
        driver.rcpIndex = 0;
    }

    void stage(int addr, int count, int bufOffset)
    {
        driver.rcpVarsStaged.append(recipeVariable(CONTEXT, STATION, "MW", addr, count, bufOffset));
    }

    void decode(const QByteArray& reply, int count, int addr, const char* regName = "MW")
    {
        analyzeFrameOfVal(reply, count, 3, variable(STATION, regName, addr, count));
    }

    /// Expects `values` in the buffer from word `word` on, low byte first.
    void expectWords(int word, std::initializer_list<int> values)
    {
        size_t at = size_t(GUARD) + 2 * size_t(word);
        for (int value : values) {
            expected[at++] = static_cast<unsigned char>(value & 0xFF);
            expected[at++] = static_cast<unsigned char>(value >> 8);
        }
    }

    void expectBlock(const Notifications& told)
    {
        EXPECT_EQ(expected, block);
        EXPECT_EQ(told, takeNotifications());
    }

    static Notification filled(int word)
    {
        return {0, -1, "RWI", word};
    }

    std::vector<unsigned char> block;
    std::vector<unsigned char> expected;
};

std::vector<std::string> namesSeen;

void spoilName(int, int, QString& name, int)
{
    namesSeen.push_back(name.toStdString());
    name = text("spoilt");
}

Bytes bytesWhenTold;

void noteFilledWord(int, int, QString& name, int word)
{
    if (name != text("RWI")) return;
    bytesWhenTold.push_back(driver.rcpBuffer[2 * word]);
    bytesWhenTold.push_back(driver.rcpBuffer[2 * word + 1]);
}

} // namespace

TEST_F(RecipeUploadDecoding, AWordIsInTheBufferWhenTheHostIsToldOfIt)
{
    bytesWhenTold.clear();
    intf_setAddrValueChangeCallBack(noteFilledWord);
    stage(3100, 2, 10);
    decode(withChecksum({2, 3, 4, 0x01, 0x02, 0x03, 0x04}), 2, 3100);
    EXPECT_EQ((Bytes{0x02, 0x01, 0x04, 0x03}), bytesWhenTold);
}

TEST_F(RecipeUploadDecoding, WordsGoToTheBufferLowByteFirstAndAreReportedByTheirPlace)
{
    stage(3100, 2, 10);
    decode(withChecksum({2, 3, 4, 0x01, 0x02, 0x03, 0x04}), 2, 3100);
    EXPECT_EQ(0x02, int(driver.rcpBuffer[20]));
    EXPECT_EQ(0x01, int(driver.rcpBuffer[21]));
    EXPECT_EQ(0x04, int(driver.rcpBuffer[22]));
    EXPECT_EQ(0x03, int(driver.rcpBuffer[23]));
    expectWords(10, {0x0102, 0x0304});
    expectBlock({{0, -1, "RWI", 10}, {0, -1, "RWI", 11}});
}

TEST_F(RecipeUploadDecoding, TheCacheTakesTheReplyInFirst)
{
    stage(3100, 2, 10);
    putUnit(STATION, "MW", 3100, 0, 1);
    putUnit(STATION, "MW", 3101, 0, 1);
    decode(withChecksum({2, 3, 4, 0x01, 0x02, 0x03, 0x04}), 2, 3100);
    EXPECT_EQ(Bytes({0x04, 0x03, 0, 0}), readBytes(STATION, "MW", 3101));
    EXPECT_EQ(Notifications({{CONTEXT, STATION, "MW", 3100},
                             {CONTEXT, STATION, "MW", 3101},
                             filled(10),
                             filled(11)}),
              takeNotifications());
}

TEST_F(RecipeUploadDecoding, UnchangedWordsAreFilledAndReportedAsWell)
{
    stage(3100, 1, 0);
    putUnit(STATION, "MW", 3100, 0x0102, 1);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    expectWords(0, {0x0102});
    expectBlock({filled(0)});
}

TEST_F(RecipeUploadDecoding, VariablesOfABlockTakeTheirOwnWordsOfTheReply)
{
    stage(3100, 1, 30);
    stage(3100, 2, 5);
    stage(3102, 1, 40);
    decode(withChecksum({2, 3, 6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}), 3, 3100);
    expectWords(30, {0x0102});
    expectWords(5, {0x0102, 0x0304});
    expectWords(40, {0x0506});
    expectBlock({filled(30), filled(5), filled(6), filled(40)});
}

TEST_F(RecipeUploadDecoding, TheBlockInFlightServesItsOwnVariablesOnly)
{
    stage(3100, 1, 0);
    stage(3200, 1, 1);
    stage(3200, 1, 2);
    stage(3300, 1, 3);
    driver.blockStartIndex = {0, 1, 3};
    driver.rcpIndex = 1;
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3200);
    expectWords(1, {0x0102, 0x0102});
    expectBlock({filled(1), filled(2)});
}

TEST_F(RecipeUploadDecoding, TheLastBlockReachesToTheEndOfTheSet)
{
    stage(3100, 1, 0);
    stage(3200, 1, 1);
    stage(3201, 1, 2);
    driver.blockStartIndex = {0, 1};
    driver.rcpIndex = 1;
    decode(withChecksum({2, 3, 4, 0x01, 0x02, 0x03, 0x04}), 2, 3200);
    expectWords(1, {0x0102, 0x0304});
    EXPECT_EQ(expected, block);
}

TEST_F(RecipeUploadDecoding, WordsBehindTheReplysEndAreFilledWithZero)
{
    stage(3100, 3, 0);
    decode(bytes({2, 3, 6, 0x01, 0x02, 0x03}), 3, 3100);
    expectWords(0, {0x0102, 0x0300, 0x0000});
    expectBlock({filled(0), filled(1), filled(2)});
}

TEST_F(RecipeUploadDecoding, WordsFarOutsideTheReplyAreFilledWithZero)
{
    stage(3100, 1, 0);
    stage(3000, 1, 1);
    stage(HIGHEST, 1, 2);
    stage(LOWEST, 1, 3);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    expectWords(0, {0x0102, 0, 0, 0});
    EXPECT_EQ(expected, block);
}

TEST_F(RecipeUploadDecoding, TheFirstDataByteIsWhereTheFrameSays)
{
    stage(3100, 1, 0);
    analyzeFrameOfVal(bytes({9, 9, 9, 9, 9, 0x01, 0x02}), 1, 5, variable(STATION, "MW", 3100, 1));
    expectWords(0, {0x0102});
    EXPECT_EQ(expected, block);
}

TEST_F(RecipeUploadDecoding, AVariableOfNoWordsFillsNothing)
{
    for (int count : {0, -1, int(LOWEST)})
        stage(3100, count, 0);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    expectBlock({});
}

TEST_F(RecipeUploadDecoding, WordsBeforeTheBufferAreNeitherFilledNorReported)
{
    stage(3100, 3, -2);
    stage(3100, 1, LOWEST);
    decode(withChecksum({2, 3, 6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}), 3, 3100);
    expectWords(0, {0x0506});
    expectBlock({filled(0)});
}

TEST_F(RecipeUploadDecoding, WithoutABufferOnlyTheCacheTakesTheReplyIn)
{
    stage(3100, 1, 0);
    driver.rcpBuffer = 0;
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    EXPECT_EQ(Bytes({0x02, 0x01, 0, 0}), readBytes(STATION, "MW", 3100));
    expectBlock({});
}

TEST_F(RecipeUploadDecoding, WithoutACallbackTheBufferIsFilledAllTheSame)
{
    stage(3100, 1, 0);
    intf_setAddrValueChangeCallBack(0);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    expectWords(0, {0x0102});
    EXPECT_EQ(expected, block);
}

TEST_F(RecipeUploadDecoding, ASetEmptiedMeanwhileIsSkipped)
{
    driver.blockStartIndex = {0, 2};
    for (int blockIndex : {0, 1}) {
        driver.rcpIndex = blockIndex;
        decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    }
    expectBlock({});
    EXPECT_EQ(Bytes({0x02, 0x01, 0, 0}), readBytes(STATION, "MW", 3100));
}

TEST_F(RecipeUploadDecoding, OfASetShortenedMeanwhileTheRestIsServed)
{
    stage(3100, 1, 0);
    stage(3200, 1, 1);
    driver.blockStartIndex = {0, 1, 4, 6};
    for (int blockIndex : {1, 2, 3}) {
        driver.rcpIndex = blockIndex;
        decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3200);
    }
    expectWords(1, {0x0102});
    expectBlock({filled(1)});
}

TEST_F(RecipeUploadDecoding, AnIndexThatNamesNoBlockIsSkipped)
{
    stage(3100, 1, 0);
    for (int blockIndex : {-1, 1, 2, int(LOWEST), int(HIGHEST)}) {
        driver.rcpIndex = blockIndex;
        decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    }
    driver.rcpIndex = 0;
    driver.blockStartIndex.clear();
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    expectBlock({});
}

TEST_F(RecipeUploadDecoding, OnlyAnUploadFillsTheBuffer)
{
    stage(3100, 1, 0);
    for (int kind : {0, 1, 2, 3, 4, 5, 7}) {
        driver.frameKind = kind;
        decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100);
    }
    expectBlock({});
}

TEST_F(RecipeUploadDecoding, AReplyOfABitAreaIsSpreadByWordsLikeAnyOther)
{
    stage(3000, 1, 4);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3000, "MX");
    expectWords(4, {0x0102});
    EXPECT_EQ(expected, block);
}

TEST_F(RecipeUploadDecoding, AReplyOfAnAreaNobodyKnowsFillsNothing)
{
    stage(3100, 1, 0);
    decode(withChecksum({2, 3, 2, 0x01, 0x02}), 1, 3100, "XX");
    expectBlock({});
}

TEST_F(RecipeUploadDecoding, EachFilledWordIsReportedWithAFreshText)
{
    stage(3100, 2, 0);
    namesSeen.clear();
    intf_setAddrValueChangeCallBack(spoilName);
    distributeRecipeUpload(withChecksum({2, 3, 4, 0x01, 0x02, 0x03, 0x04}), 3);
    EXPECT_EQ(std::vector<std::string>({"RWI", "RWI"}), namesSeen);
}

TEST_F(RecipeUploadDecoding, TheSetAndTheIndexStayAsTheyAre)
{
    stage(3100, 1, 0);
    distributeRecipeUpload(withChecksum({2, 3, 2, 0x01, 0x02}), 3);
    EXPECT_EQ(1, int(driver.rcpVarsStaged.size()));
    EXPECT_EQ(1, int(driver.blockStartIndex.size()));
    EXPECT_EQ(0, driver.rcpIndex);
}
