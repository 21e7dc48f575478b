// The host calls the driver from inside the callbacks that report the end of a one-shot read ("-1")
// or a filled recipe word ("RWI").

#include "exchangeTest.h"

#include <functional>

namespace {

enum { RETRY_LIMIT = 2, UNTOUCHED = 0xEE };

const char* const END_OF_READ = "-1";
const char* const FILLED_WORD = "RWI";

std::function<void()> insideCallback; ///< runs at the first report of `reported`
std::string reported;
int reports; ///< of that name

void callBack(int, int, QString& name, int)
{
    if (name.toStdString() != reported) return;
    ++reports;
    std::function<void()> inside;
    inside.swap(insideCallback);
    if (inside) inside();
}

class CallsInsideCallbacks : public ExchangeTest
{
protected:
    CallsInsideCallbacks()
    {
        initialise(RETRY_LIMIT, 1);
        intf_setAddrValueChangeCallBack(callBack);
    }

    ~CallsInsideCallbacks() override
    {
        insideCallback = nullptr;
    }

    static void inside(const char* name, std::function<void()> calls)
    {
        reported = name;
        reports = 0;
        insideCallback = std::move(calls);
    }

    static void ask(const char* regName, int addr)
    {
        KEY_ADDRESS wanted = key(1, regName, addr, 1);
        intf_addConditionRead(wanted, 9);
    }

    static void pollWord(int addr)
    {
        QList<KEY_ADDRESS> keys;
        keys.append(key(1, "QW", addr, 1));
        intf_addrMerge(keys);
    }

    /// An upload of the words 100 and 101 of QW, one block each, to the recipe words 0 and 1.
    void startUpload()
    {
        QVector<_RCP_VAR_PRO> records;
        records.append(recipeVariable(CONTEXT, 1, "QW", 100, 1, 0));
        records.append(recipeVariable(CONTEXT, 1, "QW", 101, 1, 1));
        intf_setRcpAddress(records);
        raise(RECIPE_UPLOAD_FLAG);
    }

    /// The same words as one record, read as one block; or as other records that start together.
    void startUploadOfOneBlock(QVector<_RCP_VAR_PRO> records = {
                                   recipeVariable(CONTEXT, 1, "QW", 100, 2, 0)})
    {
        intf_setRcpAddress(records);
        raise(RECIPE_UPLOAD_FLAG);
    }

    int answerTwoWords()
    {
        return answer(withChecksum({1, 3, 4, 1, 2, 3, 4}));
    }

    /// Ends the read in flight, by a good reply or by silence.
    int end(bool good)
    {
        if (good) return answerWord(0);
        int result = silence();
        while (result == REPLY_RETRY)
            result = silence();
        return result;
    }

    FRAME_PRO innerFrame;
    QString innerText;
};

} // namespace

TEST_F(CallsInsideCallbacks, ANewStartAtTheEndOfAReadLeavesTheListsEmpty)
{
    for (bool good : {true, false}) {
        ask("IW", 5);
        request();
        inside(END_OF_READ, [this] { initialise(RETRY_LIMIT, 1); });
        EXPECT_EQ(good ? REPLY_ACCEPTED : REPLY_GIVEN_UP, end(good));
        EXPECT_EQ(1, reports);
        EXPECT_TRUE(driver.condReadList.isEmpty());
        EXPECT_TRUE(driver.frameQueue.isEmpty());
        EXPECT_EQ("none", request());
    }
}

TEST_F(CallsInsideCallbacks, AReadAskedForAfterANewStartStaysQueued)
{
    for (bool good : {true, false}) {
        ask("IW", 5);
        request();
        inside(END_OF_READ, [this] {
            initialise(RETRY_LIMIT, 1);
            ask("IW", 5);
        });
        end(good);
        EXPECT_EQ(1, int(driver.condReadList.size()));
        EXPECT_EQ("01 04 00 05 00 01 21 CB", request()); // by pymodbus 3.0
        end(true);
        EXPECT_EQ(2, reports);
        EXPECT_TRUE(driver.condReadList.isEmpty());
    }
}

TEST_F(CallsInsideCallbacks, AnExchangeBegunAfterANewStartKeepsItsFrameAndItsFailures)
{
    for (bool good : {true, false}) {
        SCOPED_TRACE(good);
        ask("IW", 5);
        request();
        inside(END_OF_READ, [this] {
            initialise(RETRY_LIMIT, 1);
            pollWord(7);
            EXPECT_EQ(1, intf_getSendFrame(&innerFrame));
            QByteArray nothing;
            EXPECT_EQ(REPLY_RETRY, intf_dealRcvFrame(nothing, innerText));
        });
        EXPECT_EQ(good ? REPLY_ACCEPTED : REPLY_GIVEN_UP, end(good));
        EXPECT_EQ(1, driver.failCount);
        ASSERT_EQ(1, int(driver.frameQueue.size()));
        EXPECT_EQ(7, driver.frameQueue.at(0).var.addr);
        EXPECT_EQ(REPLY_GIVEN_UP, silence());
    }
}

TEST_F(CallsInsideCallbacks, ABlockPolledInsideTheEndOfAReadIsExchangedWhole)
{
    pollWord(7);
    for (bool good : {true, false}) {
        ask("IW", 5);
        ask("IW", 6);
        driver.condVar = variable(1, "IW", 5, 1);
        driver.priorityCount = 0;
        request();
        inside(END_OF_READ, [this] {
            EXPECT_EQ(hex(withChecksum({1, 3, 0, 7, 0, 1})), request());
            EXPECT_EQ(REPLY_ACCEPTED, answerWord(0x1234));
        });
        end(good);
        EXPECT_EQ(1, reports);
        EXPECT_EQ(good ? 1 : 0, int(driver.condReadList.size()));
        EXPECT_TRUE(driver.frameQueue.isEmpty());
        if (good) {
            EXPECT_EQ(6, driver.condReadList.at(0).addr);
        }
        driver.condReadList.clear();
    }
}

TEST_F(CallsInsideCallbacks, AReadBuiltAgainInsideItsEndIsToldOnlyOnce)
{
    ask("IW", 5);
    ask("IW", 6);
    driver.condVar = variable(1, "IW", 5, 1);
    request();
    inside(END_OF_READ, [this] {
        raise(RECIPE_UPLOAD_FLAG); // without a recipe the last request is built again
        EXPECT_EQ("01 04 00 05 00 01 21 CB", request());
        EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
    });
    end(true);
    EXPECT_EQ(1, reports);
    ASSERT_EQ(1, int(driver.condReadList.size()));
    EXPECT_EQ(6, driver.condReadList.at(0).addr);
}

TEST_F(CallsInsideCallbacks, AReadAskedForAtTheEndOfAGoodOneStaysAndOfAGivenUpOneIsDroppedWithIt)
{
    for (bool good : {false, true}) {
        ask("IW", 5);
        request();
        inside(END_OF_READ, [] { ask("IW", 6); });
        end(good);
        EXPECT_EQ(1, reports);
        EXPECT_EQ(good ? "6" : "", addresses(driver.condReadList));
    }
}

TEST_F(CallsInsideCallbacks, ANewStartAtAFilledWordEndsTheUpload)
{
    std::vector<unsigned char> newBuffer(RECIPE_BYTES, UNTOUCHED);
    startUploadOfOneBlock();
    request();
    inside(FILLED_WORD, [this, &newBuffer] {
        recipe.swap(newBuffer);
        initialise(RETRY_LIMIT, 1);
        shared[RECIPE_UPLOAD_FLAG] = 0;
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerTwoWords());
    EXPECT_EQ(1, reports);
    EXPECT_EQ(std::vector<unsigned char>(RECIPE_BYTES, UNTOUCHED), recipe);
    EXPECT_EQ(2, newBuffer[0]);
    EXPECT_EQ(0, newBuffer[2]);
    EXPECT_TRUE(driver.frameQueue.isEmpty());
    EXPECT_EQ(0, driver.rcpIndex);
    EXPECT_EQ(FRAME_IDLE, driver.frameKind);
}

TEST_F(CallsInsideCallbacks, ANewStartAtAFilledWordEndsAMergedBlockToo)
{
    std::vector<unsigned char> newBuffer(RECIPE_BYTES, UNTOUCHED);
    driver.mergeLimit = 32;
    startUploadOfOneBlock(
        {recipeVariable(CONTEXT, 1, "QW", 100, 2, 0), recipeVariable(CONTEXT, 1, "QW", 100, 2, 2)});
    ASSERT_EQ(1, int(driver.rcpVars.size()));
    request();
    inside(FILLED_WORD, [this, &newBuffer] {
        recipe.swap(newBuffer);
        initialise(RETRY_LIMIT, 1);
        shared[RECIPE_UPLOAD_FLAG] = 0;
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerTwoWords());
    EXPECT_EQ(1, reports);
    EXPECT_EQ(std::vector<unsigned char>(RECIPE_BYTES, UNTOUCHED), recipe);
}

TEST_F(CallsInsideCallbacks, AnExchangeBegunAtAFilledWordAfterANewStartStaysInFlight)
{
    startUpload();
    request();
    inside(FILLED_WORD, [this] {
        initialise(RETRY_LIMIT, 1);
        shared[RECIPE_UPLOAD_FLAG] = 0;
        pollWord(7);
        pollWord(7);
        EXPECT_EQ(1, intf_getSendFrame(&innerFrame));
        QByteArray nothing;
        EXPECT_EQ(REPLY_RETRY, intf_dealRcvFrame(nothing, innerText));
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(0x0102));
    ASSERT_EQ(1, int(driver.frameQueue.size()));
    EXPECT_EQ(7, driver.frameQueue.at(0).var.addr);
    EXPECT_EQ(1, driver.failCount);
    EXPECT_EQ(0, driver.rcpIndex);
}

TEST_F(CallsInsideCallbacks, ARepeatedUploadAfterANewStartAtAFilledWordStaysInFlight)
{
    startUpload();
    request();
    inside(FILLED_WORD, [this] {
        initialise(RETRY_LIMIT, 1);
        EXPECT_EQ(1, intf_getSendFrame(&innerFrame)); // the same bytes as the frame answered
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(0x0102));
    EXPECT_EQ(1, reports);
    EXPECT_EQ(1, int(driver.frameQueue.size()));
    EXPECT_EQ(0, driver.rcpIndex);
}

TEST_F(CallsInsideCallbacks, AReplyHandedInAtAFilledWordIsIgnored)
{
    startUpload();
    request();
    inside(FILLED_WORD, [this] {
        QByteArray again = withChecksum({1, 3, 2, 3, 4});
        EXPECT_EQ(REPLY_NOTHING_PENDING, intf_dealRcvFrame(again, innerText));
        QByteArray nothing;
        EXPECT_EQ(REPLY_NOTHING_PENDING, intf_dealRcvFrame(nothing, innerText));
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(0x0102));
    EXPECT_EQ(1, reports);
    EXPECT_EQ(2, recipe[0]);
    EXPECT_EQ(1, recipe[1]);
    EXPECT_EQ(1, driver.rcpIndex);
    EXPECT_TRUE(driver.frameQueue.isEmpty());
}

TEST_F(CallsInsideCallbacks, ARecipeHandedInAtAFilledWordDoesNotDisturbTheReply)
{
    startUploadOfOneBlock();
    request();
    inside(FILLED_WORD, [] {
        QVector<_RCP_VAR_PRO> none;
        intf_setRcpAddress(none);
    });
    EXPECT_EQ(REPLY_ACCEPTED, answerTwoWords());
    EXPECT_EQ(2, reports);
    EXPECT_EQ(4, recipe[2]);
    EXPECT_EQ(3, recipe[3]);
}

TEST_F(CallsInsideCallbacks, ABitWriteInFlightIsNotTakenForAReplyBeingTakenIn)
{
    driver.writeList.append(variable(1, "QX", 3, 1, {1}));
    request();
    EXPECT_EQ(REPLY_ACCEPTED, echo());
}
