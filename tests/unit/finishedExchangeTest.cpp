#include "exchangeTest.h"
#include "replyHandling.h"

namespace {

/// Bookkeeping after an exchange, with all lists filled.
class FinishedExchange : public ExchangeTest
{
protected:
    FinishedExchange()
    {
        queueWrites(2);
        queueOneShotReads(2);
        poll(3);
        for (int i = 0; i < 2; ++i)
            driver.rcpVars.append(recipeVariable(CONTEXT, 1, "MW", 3000 + i, 1, i));
        raise(RECIPE_DOWNLOAD_FLAG);
        raise(RECIPE_UPLOAD_FLAG);
    }

    void finish(int frameKind, bool failed = false)
    {
        driver.frameKind = frameKind;
        driver.commFailed = failed ? 1 : 0;
        dealListWhenFinish();
    }

    /// Addresses queued as "writes | one-shot reads | polled blocks | recipe position, flags".
    std::string state() const
    {
        return addresses(driver.writeList) + " | " + addresses(driver.condReadList) + " | " +
               addresses(driver.readList) + " | " + std::to_string(driver.rcpIndex) + " " +
               std::to_string(shared[RECIPE_DOWNLOAD_FLAG]) +
               std::to_string(shared[RECIPE_UPLOAD_FLAG]);
    }
};

} // namespace

TEST_F(FinishedExchange, OfNoVariableChangesNothing)
{
    for (int kind : {int(FRAME_IDLE), int(FRAME_HANDSHAKE), 7, -1}) {
        for (bool failed : {false, true}) {
            finish(kind, failed);
            EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 11", state()) << kind;
        }
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(FinishedExchange, OfAWriteRemovesTheWrite)
{
    finish(FRAME_WRITE);
    EXPECT_EQ("1 | 0 1 | 3000 3001 3002 | 0 11", state());
    finish(FRAME_WRITE, true);
    EXPECT_EQ(" | 0 1 | 3000 3001 3002 | 0 11", state());
    finish(FRAME_WRITE);
    EXPECT_EQ(" | 0 1 | 3000 3001 3002 | 0 11", state());
}

TEST_F(FinishedExchange, OfAOneShotReadRemovesItAndOfAFailedOneThemAll)
{
    finish(FRAME_ONE_SHOT_READ);
    EXPECT_EQ("0 1 | 1 | 3000 3001 3002 | 0 11", state());
    queueOneShotReads(1);
    finish(FRAME_ONE_SHOT_READ, true);
    EXPECT_EQ("0 1 |  | 3000 3001 3002 | 0 11", state());
}

TEST_F(FinishedExchange, OfAPolledBlockMovesItToTheEnd)
{
    finish(FRAME_CYCLIC_READ);
    EXPECT_EQ("0 1 | 0 1 | 3001 3002 3000 | 0 11", state());
    finish(FRAME_CYCLIC_READ, true);
    EXPECT_EQ("0 1 | 0 1 | 3002 3000 3001 | 0 11", state());
}

TEST_F(FinishedExchange, OfTheOnlyPolledBlockOrOfNoneMovesNothing)
{
    driver.readList.clear();
    finish(FRAME_CYCLIC_READ);
    EXPECT_EQ("0 1 | 0 1 |  | 0 11", state());
    poll(1);
    finish(FRAME_CYCLIC_READ);
    EXPECT_EQ("0 1 | 0 1 | 3000 | 0 11", state());
}

TEST_F(FinishedExchange, OfTwoPolledBlocksSwapsThem)
{
    driver.readList.removeLast();
    finish(FRAME_CYCLIC_READ);
    EXPECT_EQ("0 1 | 0 1 | 3001 3000 | 0 11", state());
}

TEST_F(FinishedExchange, OfARecipesBlockGoesOnToTheLastAndLowersItsFlag)
{
    finish(FRAME_RECIPE_DOWNLOAD);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 1 11", state());
    finish(FRAME_RECIPE_DOWNLOAD);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 01", state());
    raise(RECIPE_DOWNLOAD_FLAG);
    finish(FRAME_RECIPE_UPLOAD);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 1 11", state());
    finish(FRAME_RECIPE_UPLOAD);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 10", state());
}

TEST_F(FinishedExchange, OfAFailedRecipeBlockEndsTheTransferAtOnce)
{
    driver.rcpIndex = 1;
    finish(FRAME_RECIPE_UPLOAD, true);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 10", state());
    raise(RECIPE_UPLOAD_FLAG);
    finish(FRAME_RECIPE_DOWNLOAD, true);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 01", state());
}

TEST_F(FinishedExchange, OfARecipeThatShrankMeanwhileEndsTheTransfer)
{
    driver.rcpIndex = 1;
    driver.rcpVars.clear();
    finish(FRAME_RECIPE_DOWNLOAD);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 01", state());
}

TEST_F(FinishedExchange, OfARecipeWithoutASharedBlockEndsTheTransfer)
{
    driver.hostShared = nullptr;
    driver.rcpIndex = 1;
    finish(FRAME_RECIPE_DOWNLOAD);
    EXPECT_EQ(0, driver.rcpIndex);
}

TEST_F(FinishedExchange, OfARecipeWithoutAMutexLowersTheFlag)
{
    driver.hostMutex = nullptr;
    finish(FRAME_RECIPE_UPLOAD, true);
    EXPECT_EQ("0 1 | 0 1 | 3000 3001 3002 | 0 10", state());
}
