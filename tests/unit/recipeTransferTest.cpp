#include "cacheHelpers.h"
#include "exchangeTest.h"

#include <algorithm>

namespace {

enum { OTHER_LINK = 8 };

class RecipeTransfer : public ExchangeTest
{
protected:
    int setRecipe(QVector<_RCP_VAR_PRO> records)
    {
        return intf_setRcpAddress(records);
    }

    /// Two blocks of station 1, handed in against their order: MW 3000 in word 0 of the buffer,
    /// MW 3010 and 3011 in the words 1 and 2.
    void setWords()
    {
        ASSERT_EQ(2, setRecipe({recipeVariable(CONTEXT, 1, "MW", 3010, 2, 1),
                                recipeVariable(OTHER_LINK, 1, "MW", 3001, 1, 5),
                                recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0)}));
    }

    void fillBuffer(size_t at, std::initializer_list<unsigned char> values)
    {
        std::copy(values.begin(), values.end(), recipe.begin() + long(at));
    }

    Bytes buffer(size_t length) const
    {
        return Bytes(recipe.begin(), recipe.begin() + long(length));
    }

    static Notification filled(int word)
    {
        return {0, -1, "RWI", word};
    }
};

} // namespace

// Frames and replies in hexadecimal digits were made by pymodbus 3.0's RTU framer.

TEST_F(RecipeTransfer, ADownloadWritesEveryBlockFromTheBuffer)
{
    setRecipe({recipeVariable(CONTEXT, 2, "QX", 5, 2, 8),
               recipeVariable(CONTEXT, 1, "MW", 3010, 2, 1),
               recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0)});
    fillBuffer(0, {0x02, 0x01, 0x04, 0x03, 0x06, 0x05});
    fillBuffer(16, {1, 0, 1, 1});
    raise(RECIPE_DOWNLOAD_FLAG);

    EXPECT_EQ("01 06 0B B8 01 02 8B 9A", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 06 0B B8 01 02 8B 9A"));
    EXPECT_EQ(1, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ("01 10 0B C2 00 02 04 03 04 05 06 CF C1", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 10 0B C2 00 02 E2 10"));
    EXPECT_EQ(1, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ("02 0F 00 05 00 02 01 01 93 42", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("02 0F 00 05 00 02 C4 38"));

    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ(0, driver.rcpIndex);
    EXPECT_EQ("none", request());
}

TEST_F(RecipeTransfer, ADownloadTouchesNeitherTheCacheNorTheHost)
{
    setWords();
    raise(RECIPE_DOWNLOAD_FLAG);
    for (int i = 0; i < 2; ++i) {
        request();
        EXPECT_EQ(REPLY_ACCEPTED, echo());
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(RecipeTransfer, AnUploadFillsTheBufferAndReportsEachWord)
{
    setWords();
    raise(RECIPE_UPLOAD_FLAG);

    EXPECT_EQ("01 03 0B B8 00 01 06 0B", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 02 11 22 34 0D"));
    EXPECT_EQ((Bytes{0x22, 0x11, 0, 0, 0, 0, 0, 0}), buffer(8));
    EXPECT_EQ((Notifications{filled(0)}), takeNotifications());
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);

    EXPECT_EQ("01 03 0B C2 00 02 67 D3", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 33 44 55 66 0A 18"));
    EXPECT_EQ((Bytes{0x22, 0x11, 0x44, 0x33, 0x66, 0x55, 0, 0}), buffer(8));
    EXPECT_EQ((Notifications{filled(1), filled(2)}), takeNotifications());

    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(0, driver.rcpIndex);
    EXPECT_EQ("none", request());
}

TEST_F(RecipeTransfer, AnUploadServesEveryVariableOfAMergedBlock)
{
    setRecipe({recipeVariable(CONTEXT, 1, "MW", 3010, 1, 4),
               recipeVariable(CONTEXT, 1, "MW", 3010, 2, 0)});
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ("01 03 0B C2 00 02 67 D3", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 33 44 55 66 0A 18"));
    EXPECT_EQ((Bytes{0x44, 0x33, 0x66, 0x55, 0, 0, 0, 0, 0x44, 0x33}), buffer(10));
    EXPECT_EQ((Notifications{filled(4), filled(0), filled(1)}), takeNotifications());
}

TEST_F(RecipeTransfer, AnUploadUpdatesTheCacheAsWell)
{
    setWords();
    putUnit(1, "MW", 3000, 0, 1);
    raise(RECIPE_UPLOAD_FLAG);
    request();
    answer("01 03 02 11 22 34 0D");
    EXPECT_EQ((Bytes{0x22, 0x11, 0, 0}), readBytes(1, "MW", 3000));
    EXPECT_EQ((Notifications{{CONTEXT, 1, "MW", 3000}, filled(0)}), takeNotifications());
}

TEST_F(RecipeTransfer, ADownloadIsFollowedByTheUploadThatWaited)
{
    setWords();
    raise(RECIPE_DOWNLOAD_FLAG);
    raise(RECIPE_UPLOAD_FLAG);
    for (int i = 0; i < 2; ++i) {
        request();
        echo();
    }
    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ("01 03 0B B8 00 01 06 0B", request());
}

TEST_F(RecipeTransfer, TheListsGoOnBehindARecipe)
{
    setWords();
    queueWrites(1);
    raise(RECIPE_DOWNLOAD_FLAG);
    for (int i = 0; i < 2; ++i) {
        request();
        echo();
    }
    EXPECT_EQ("0", addresses(driver.writeList));
    EXPECT_EQ(hex(withChecksum({1, 6, 0, 0, 0, 0})), request());
}

TEST_F(RecipeTransfer, AFailureAbandonsTheTransferAndLowersItsFlag)
{
    setWords();
    for (RecipeFlag flag : {RECIPE_DOWNLOAD_FLAG, RECIPE_UPLOAD_FLAG}) {
        SCOPED_TRACE(flag);
        raise(flag);
        request();
        EXPECT_EQ(REPLY_ACCEPTED, flag == RECIPE_DOWNLOAD_FLAG ? echo() : answerWord(1));
        request();
        EXPECT_EQ(REPLY_RETRY, silence());
        EXPECT_EQ(REPLY_RETRY, silence());
        EXPECT_EQ(1, shared[flag]);
        EXPECT_EQ(REPLY_GIVEN_UP, silence());
        EXPECT_EQ("0,1,3010,MW", errorText.toStdString());
        EXPECT_EQ(0, shared[flag]);
        EXPECT_EQ(0, driver.rcpIndex);
        EXPECT_EQ("none", request());
    }
}

TEST_F(RecipeTransfer, AFailedTransferStartsFromItsFirstBlockAgain)
{
    setWords();
    raise(RECIPE_UPLOAD_FLAG);
    request();
    answerWord(1);
    request();
    giveUp();
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ("01 03 0B B8 00 01 06 0B", request());
}

TEST_F(RecipeTransfer, AFailureLeavesTheOtherFlagRaised)
{
    setWords();
    raise(RECIPE_DOWNLOAD_FLAG);
    raise(RECIPE_UPLOAD_FLAG);
    request();
    giveUp();
    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ("01 03 0B B8 00 01 06 0B", request());
}

TEST_F(RecipeTransfer, AFailedUploadLeavesTheBuffer)
{
    setWords();
    fillBuffer(0, {1, 2, 3, 4, 5, 6});
    raise(RECIPE_UPLOAD_FLAG);
    request();
    giveUp();
    EXPECT_EQ((Bytes{1, 2, 3, 4, 5, 6}), buffer(6));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(RecipeTransfer, ATransferWhoseFlagIsLoweredGoesOnWhereItStoodWhenItIsRaised)
{
    setWords();
    queueWrites(1);
    raise(RECIPE_UPLOAD_FLAG);
    request();
    answerWord(1);
    shared[RECIPE_UPLOAD_FLAG] = 0;
    request();
    EXPECT_EQ(FRAME_WRITE, driver.frameKind);
    echo();
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ("01 03 0B C2 00 02 67 D3", request());
}

TEST_F(RecipeTransfer, ABroadcastDownloadNeedsNoReplies)
{
    setRecipe({recipeVariable(CONTEXT, 0, "MW", 3000, 1, 0),
               recipeVariable(CONTEXT, 0, "MW", 3010, 2, 1)});
    raise(RECIPE_DOWNLOAD_FLAG);
    for (int i = 0; i < 2; ++i) {
        request();
        EXPECT_GT(frame.sendLen, 0);
        EXPECT_EQ(0, frame.recvLen);
        EXPECT_EQ(REPLY_ACCEPTED, silence());
    }
    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);
}

TEST_F(RecipeTransfer, ABroadcastUploadEndsWithoutAValue)
{
    setRecipe({recipeVariable(CONTEXT, 0, "MW", 3000, 1, 0)});
    fillBuffer(0, {1, 2});
    raise(RECIPE_UPLOAD_FLAG);
    request();
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ((Bytes{1, 2}), buffer(2));
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(RecipeTransfer, ABlockOfNothingEndsAsAnAcknowledgement)
{
    setRecipe({recipeVariable(CONTEXT, 1, "MW", 3000, 0, 0)});
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ(hex(withChecksum({1, 3, 0x0B, 0xB8, 0, 0})), request());
    EXPECT_EQ(REPLY_ACCEPTED, answer(withChecksum({1, 3, 0})));
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
}

TEST_F(RecipeTransfer, ASetReplacedDuringADownloadIsTakenUpAtTheSamePosition)
{
    setWords();
    raise(RECIPE_DOWNLOAD_FLAG);
    request();
    setRecipe({recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0),
               recipeVariable(CONTEXT, 1, "MW", 3005, 1, 0)});
    fillBuffer(0, {0x34, 0x12});
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
}

TEST_F(RecipeTransfer, ASetShortenedDuringATransferEndsIt)
{
    for (RecipeFlag flag : {RECIPE_DOWNLOAD_FLAG, RECIPE_UPLOAD_FLAG}) {
        SCOPED_TRACE(flag);
        setWords();
        raise(flag);
        request();
        EXPECT_EQ(REPLY_ACCEPTED, flag == RECIPE_DOWNLOAD_FLAG ? echo() : answerWord(0x1122));
        request();
        setRecipe({recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0)});
        takeNotifications();
        EXPECT_EQ(REPLY_ACCEPTED,
                  flag == RECIPE_DOWNLOAD_FLAG ? echo() : answer("01 03 04 33 44 55 66 0A 18"));
        EXPECT_EQ(0, shared[flag]);
        EXPECT_EQ(0, driver.rcpIndex);
        EXPECT_EQ(Notifications(), takeNotifications());
    }
    EXPECT_EQ((Bytes{0x22, 0x11, 0, 0, 0, 0}), buffer(6));
}

TEST_F(RecipeTransfer, ASetEmptiedDuringAnUploadGoesOnWithItsBlocksButFillsNothing)
{
    setWords();
    raise(RECIPE_UPLOAD_FLAG);
    request();
    setRecipe({});
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 02 11 22 34 0D"));
    EXPECT_EQ((Bytes{0, 0}), buffer(2));
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ("01 03 0B C2 00 02 67 D3", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 33 44 55 66 0A 18"));
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
}
