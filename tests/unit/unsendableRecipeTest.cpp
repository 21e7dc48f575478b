#include "exchangeTest.h"

namespace {

struct UNSENDABLE_CASE
{
    const char* name;
    RecipeFlag flag;
    const char* regName;
    int count;
    int bufOffset;
    bool hasBuffer;
};

void PrintTo(const UNSENDABLE_CASE& tested, std::ostream* out)
{
    *out << tested.name;
}

/// A recipe with one block that no frame can stand for.
class UnsendableRecipe : public ExchangeTest, public testing::WithParamInterface<UNSENDABLE_CASE>
{
protected:
    void start(int station)
    {
        const UNSENDABLE_CASE& tested = GetParam();
        driver.rcpVars.append(
            recipeVariable(CONTEXT, station, tested.regName, 3000, tested.count, tested.bufOffset));
        if (!tested.hasBuffer) driver.rcpBuffer = nullptr;
        raise(tested.flag);
    }
};

/// A recipe with one block just within the limits.
class SendableRecipe : public ExchangeTest
{
protected:
    void start(const char* regName, int count, RecipeFlag flag)
    {
        driver.rcpVars.append(recipeVariable(CONTEXT, 1, regName, 3000, count, 0));
        raise(flag);
        request();
    }
};

const RecipeFlag DOWN = RECIPE_DOWNLOAD_FLAG;
const RecipeFlag UP = RECIPE_UPLOAD_FLAG;

} // namespace

TEST_P(UnsendableRecipe, IsRetriedGivenUpAndEndedWithItsErrorText)
{
    for (int station : {1, 0}) {
        SCOPED_TRACE(station);
        driver.rcpVars.clear();
        start(station);
        for (int attempt = 0; attempt < 3; ++attempt) {
            EXPECT_EQ("", request());
            EXPECT_EQ(0, frame.sendLen);
            EXPECT_EQ(1, frame.recvLen);
            EXPECT_EQ(1, shared[GetParam().flag]);
            EXPECT_EQ(attempt < 2 ? REPLY_RETRY : REPLY_GIVEN_UP, silence());
        }
        EXPECT_EQ("0," + std::to_string(station) + ",3000," + GetParam().regName,
                  errorText.toStdString());
        EXPECT_EQ(0, shared[GetParam().flag]);
        EXPECT_EQ(0, driver.rcpIndex);
        EXPECT_EQ("none", request());
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_P(UnsendableRecipe, IsSatisfiedByNoReply)
{
    initialise(100);
    start(1);
    request();
    for (int length = 0; length < 12; ++length)
        EXPECT_EQ(REPLY_RETRY, answer(QByteArray(length, '\0')));
    EXPECT_EQ(REPLY_RETRY, answer("FF"));
    EXPECT_EQ(REPLY_RETRY, answer("FF FF")); // the checksum of nothing
}

TEST_P(UnsendableRecipe, EndsATransferInTheMiddle)
{
    driver.rcpVars.append(recipeVariable(CONTEXT, 1, "QX", 0, 1, 0));
    start(1);
    driver.rcpBuffer = recipe.data();
    request();
    ASSERT_EQ(REPLY_ACCEPTED, GetParam().flag == DOWN ? echo() : answerWord(0));
    if (!GetParam().hasBuffer) driver.rcpBuffer = nullptr;
    request();
    giveUp();
    EXPECT_EQ(0, shared[GetParam().flag]);
    EXPECT_EQ(0, driver.rcpIndex);
}

TEST_P(UnsendableRecipe, LeavesTheExchangeAlive)
{
    queueWrites(1);
    start(1);
    request();
    giveUp();
    EXPECT_EQ(hex(withChecksum({1, 6, 0, 0, 0, 0})), request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, UnsendableRecipe,
    testing::Values(UNSENDABLE_CASE{"508 words", DOWN, "MW", 508, 0, true},
                    UNSENDABLE_CASE{"512 words", DOWN, "MW", 512, 0, true},
                    UNSENDABLE_CASE{"600 words", DOWN, "MW", 600, 0, true},
                    UNSENDABLE_CASE{"a huge number of words", DOWN, "MW", 0x7FFFFFFF, 0, true},
                    UNSENDABLE_CASE{"1025 bits", DOWN, "QX", 1025, 0, true},
                    UNSENDABLE_CASE{"words below 0", DOWN, "MW", -1, 0, true},
                    UNSENDABLE_CASE{"bits below 0", DOWN, "QX", -1, 0, true},
                    UNSENDABLE_CASE{"words far below 0", DOWN, "MW", -0x7FFFFFFF, 0, true},
                    UNSENDABLE_CASE{"no buffer", DOWN, "MW", 1, 0, false},
                    UNSENDABLE_CASE{"a place before the buffer", DOWN, "MW", 1, -1, true},
                    UNSENDABLE_CASE{"an unknown area", DOWN, "XX", 1, 0, true},
                    UNSENDABLE_CASE{"a suffixed area", DOWN, "MW_W", 1, 0, true},
                    UNSENDABLE_CASE{"an upload below 0", UP, "MW", -1, 0, true},
                    UNSENDABLE_CASE{"an upload of bits below 0", UP, "QX", -1, 0, true},
                    UNSENDABLE_CASE{"an upload without buffer", UP, "MW", 1, 0, false},
                    UNSENDABLE_CASE{"an upload before the buffer", UP, "MW", 1, -1, true},
                    UNSENDABLE_CASE{"an upload of an unknown area", UP, "XX", 1, 0, true}));

TEST_F(SendableRecipe, LongestOfWordsFitsTheFrame)
{
    recipe[2 * 506] = 0x34;
    recipe[2 * 506 + 1] = 0x12;
    start("MW", 507, DOWN);
    EXPECT_EQ(1023, frame.sendLen); // 2 x 507 + 9
    EXPECT_EQ(8, frame.recvLen);
    EXPECT_EQ(0x12, frame.sendBuf[7 + 2 * 506]);
    EXPECT_EQ(0x34, frame.sendBuf[8 + 2 * 506]);
}

TEST_F(SendableRecipe, LongestOfBitsFitsTheValues)
{
    recipe[1023] = 1;
    start("QX", 1024, DOWN);
    EXPECT_EQ(137, frame.sendLen); // 128 + 9
    EXPECT_EQ(0x80, frame.sendBuf[7 + 127]);
}

TEST_F(SendableRecipe, LongestToReadIsNotBoundedByTheRequest)
{
    start("MW", 600, UP);
    EXPECT_EQ(hex(withChecksum({1, 3, 0x0B, 0xB8, 0x02, 0x58})), hex(frame));
    EXPECT_EQ(1205, frame.recvLen); // 2 x 600 + 5
}

TEST_F(SendableRecipe, OfNoUnitsOrOfOneAtTheStartOfTheBufferIsTransferred)
{
    recipe[0] = 0x34;
    recipe[1] = 0x12;
    struct
    {
        const char* area;
        int count;
        RecipeFlag flag;
        QByteArray request;
    } const rows[] = {
        {"MW", 0, DOWN, withChecksum({1, 16, 0x0B, 0xB8, 0, 0, 0})},
        {"QX", 0, DOWN, withChecksum({1, 15, 0x0B, 0xB8, 0, 0, 0})},
        {"MW", 1, DOWN, withChecksum({1, 6, 0x0B, 0xB8, 0x12, 0x34})},
        {"MW", 0, UP, withChecksum({1, 3, 0x0B, 0xB8, 0, 0})},
        {"MW", 1, UP, withChecksum({1, 3, 0x0B, 0xB8, 0, 1})},
    };
    for (const auto& row : rows) {
        initialise();
        driver.rcpVars.clear();
        shared[DOWN] = shared[UP] = 0;
        start(row.area, row.count, row.flag);
        EXPECT_EQ(hex(row.request), hex(frame)) << row.area << " x" << row.count;
    }
}
