#include "exchangeTest.h"

#include <algorithm>

namespace {

/// A recipe of two blocks; the recipe buffer holds 0x1122 and 0x3344 for them.
class RecipeFrameSelection : public ExchangeTest
{
protected:
    RecipeFrameSelection()
    {
        const unsigned char values[] = {0x22, 0x11, 0x44, 0x33};
        std::copy(values, values + 4, recipe.begin());
        driver.rcpVars.append(recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0));
        driver.rcpVars.append(recipeVariable(CONTEXT, 2, "MW", 3010, 1, 1));
    }
};

const QByteArray FIRST_DOWNLOAD = withChecksum({1, 6, 0x0B, 0xB8, 0x11, 0x22});
const QByteArray SECOND_DOWNLOAD = withChecksum({2, 6, 0x0B, 0xC2, 0x33, 0x44});
const QByteArray FIRST_UPLOAD = withChecksum({1, 3, 0x0B, 0xB8, 0, 1});
const QByteArray SECOND_UPLOAD = withChecksum({2, 3, 0x0B, 0xC2, 0, 1});
const QByteArray POLLED = withChecksum({1, 3, 0x0B, 0xB8, 0, 1});

/// The frame kinds and what each builds again from QW 5, holding 7.
struct REPEAT_CASE
{
    FrameKind kind;
    QByteArray repeated;
};

const QByteArray QW5_WRITE = withChecksum({1, 6, 0, 5, 0, 7});
const QByteArray QW5_READ = withChecksum({1, 3, 0, 5, 0, 1});

const REPEAT_CASE REPEATS[] = {
    {FRAME_HANDSHAKE, QByteArray()},    {FRAME_WRITE, QW5_WRITE},
    {FRAME_ONE_SHOT_READ, QW5_READ},    {FRAME_CYCLIC_READ, QW5_READ},
    {FRAME_RECIPE_DOWNLOAD, QW5_WRITE}, {FRAME_RECIPE_UPLOAD, QW5_READ},
};

} // namespace

TEST_F(RecipeFrameSelection, TheDownloadFlagStartsADownload)
{
    raise(RECIPE_DOWNLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_DOWNLOAD), request());
    EXPECT_EQ(FRAME_RECIPE_DOWNLOAD, driver.frameKind);
    EXPECT_EQ(1, driver.varsInFrame);
    EXPECT_EQ(8, frame.recvLen);
    EXPECT_EQ(0, frame.itemCount);
}

TEST_F(RecipeFrameSelection, TheUploadFlagStartsAnUpload)
{
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_UPLOAD), request());
    EXPECT_EQ(FRAME_RECIPE_UPLOAD, driver.frameKind);
    EXPECT_EQ(1, driver.varsInFrame);
    EXPECT_EQ("3000", addresses(driver.curReadList));
    EXPECT_EQ(7, frame.recvLen);
    EXPECT_EQ(1, frame.itemCount);
}

TEST_F(RecipeFrameSelection, AnUploadCarriesNoValues)
{
    raise(RECIPE_UPLOAD_FLAG);
    request();
    EXPECT_EQ(0, frame.var.value[0]);
    EXPECT_EQ(0, frame.var.value[1]);
}

TEST_F(RecipeFrameSelection, ADownloadComesBeforeAnUpload)
{
    raise(RECIPE_DOWNLOAD_FLAG);
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_DOWNLOAD), request());
}

TEST_F(RecipeFrameSelection, ARecipeComesBeforeEverythingElse)
{
    queueWrites(1);
    queueOneShotReads(1);
    poll(1);
    raise(RECIPE_DOWNLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_DOWNLOAD), request());
    EXPECT_EQ(1, int(driver.writeList.size()));
}

TEST_F(RecipeFrameSelection, OnlyTheFlagValueOneStartsATransfer)
{
    poll(1);
    for (int value : {0, 2, 0x81, 0xFF}) {
        shared[RECIPE_DOWNLOAD_FLAG] = static_cast<unsigned char>(value);
        shared[RECIPE_UPLOAD_FLAG] = static_cast<unsigned char>(value);
        EXPECT_EQ(hex(POLLED), request()) << value;
        EXPECT_EQ(FRAME_CYCLIC_READ, driver.frameKind) << value;
        EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
    }
}

TEST_F(RecipeFrameSelection, ADownloadFlagOtherThanOneDoesNotHoldUpAnUpload)
{
    shared[RECIPE_DOWNLOAD_FLAG] = 2;
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_UPLOAD), request());
    EXPECT_EQ(FRAME_RECIPE_UPLOAD, driver.frameKind);
}

TEST_F(RecipeFrameSelection, TheBlockAtTheRecipesPositionIsTaken)
{
    driver.rcpIndex = 1;
    raise(RECIPE_DOWNLOAD_FLAG);
    EXPECT_EQ(hex(SECOND_DOWNLOAD), request());
    driver.frameQueue.clear();
    shared[RECIPE_DOWNLOAD_FLAG] = 0;
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ(hex(SECOND_UPLOAD), request());
}

TEST_F(RecipeFrameSelection, PriorityFramesAreNotCountedWhileARecipeRuns)
{
    driver.priorityCount = 5;
    raise(RECIPE_DOWNLOAD_FLAG);
    request();
    EXPECT_EQ(5, driver.priorityCount);
}

TEST_F(RecipeFrameSelection, ARecipeFrameKeepsTheIdOfTheVariableBefore)
{
    driver.curVar.varId = 42;
    raise(RECIPE_DOWNLOAD_FLAG);
    request();
    EXPECT_EQ(42, frame.var.varId);
}

TEST_F(RecipeFrameSelection, WithoutASharedBlockNoRecipeIsStarted)
{
    poll(1);
    driver.hostShared = nullptr;
    EXPECT_EQ(hex(POLLED), request());
    EXPECT_EQ(FRAME_CYCLIC_READ, driver.frameKind);
}

TEST_F(RecipeFrameSelection, AHostWithoutAMutexIsServedToo)
{
    driver.hostMutex = nullptr;
    raise(RECIPE_DOWNLOAD_FLAG);
    EXPECT_EQ(hex(FIRST_DOWNLOAD), request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(hex(SECOND_DOWNLOAD), request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(0, shared[RECIPE_DOWNLOAD_FLAG]);
}

TEST_F(RecipeFrameSelection, AFlagWithoutARecipeRepeatsTheLastRequest)
{
    driver.rcpVars.clear();
    for (RecipeFlag flag : {RECIPE_DOWNLOAD_FLAG, RECIPE_UPLOAD_FLAG}) {
        shared[RECIPE_DOWNLOAD_FLAG] = shared[RECIPE_UPLOAD_FLAG] = 0;
        raise(flag);
        for (const REPEAT_CASE& tested : REPEATS) {
            SCOPED_TRACE(tested.kind);
            driver.frameQueue.clear();
            driver.curVar = variable(1, "QW", 5, 1, {7, 0});
            driver.frameKind = tested.kind;
            driver.priorityCount = 2;
            EXPECT_EQ(hex(tested.repeated), request());
            EXPECT_EQ(tested.kind, driver.frameKind);
            EXPECT_EQ(2, driver.priorityCount);
            EXPECT_EQ(1, int(driver.frameQueue.size()));
        }
    }
}

TEST_F(RecipeFrameSelection, ARepeatedReadIsHandedToItsBuilderAsTheOnlyElement)
{
    driver.rcpVars.clear();
    raise(RECIPE_UPLOAD_FLAG);
    driver.curVar = variable(1, "QW", 5, 1);
    driver.curReadList.append(variable(1, "QW", 6, 1));
    driver.frameKind = FRAME_CYCLIC_READ;
    request();
    EXPECT_EQ("5", addresses(driver.curReadList));
}

TEST_F(RecipeFrameSelection, AFlagWithoutARecipeOffersNothingToAnIdleDriver)
{
    driver.rcpVars.clear();
    queueWrites(1);
    poll(1);
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_EQ("none", request());
    EXPECT_EQ(FRAME_IDLE, driver.frameKind);
    EXPECT_EQ(1, int(driver.writeList.size()));
}

TEST_F(RecipeFrameSelection, AFlagBehindTheLastBlockRepeatsTheLastRequest)
{
    raise(RECIPE_DOWNLOAD_FLAG);
    for (int index : {1, 2}) {
        driver.frameQueue.clear();
        driver.rcpIndex = index;
        driver.curVar = variable(1, "QW", 5, 1, {7, 0});
        driver.frameKind = FRAME_RECIPE_DOWNLOAD;
        EXPECT_EQ(hex(index == 2 ? QW5_WRITE : SECOND_DOWNLOAD), request()) << index;
        EXPECT_EQ(index, driver.rcpIndex);
    }
}

TEST_F(RecipeFrameSelection, ALoweredFlagLetsTheListsGoOn)
{
    driver.rcpVars.clear();
    raise(RECIPE_DOWNLOAD_FLAG);
    poll(1);
    EXPECT_EQ("none", request());
    shared[RECIPE_DOWNLOAD_FLAG] = 0;
    EXPECT_EQ(hex(POLLED), request());
}
