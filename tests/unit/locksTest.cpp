#include "cacheHelpers.h"
#include "exchangeTest.h"
#include "localStore.h"
#include "replyHandling.h"
#include "writeCompletion.h"

#include <chrono>
#include <functional>
#include <future>

namespace {

class Locks : public ExchangeTest
{
protected:
    /// Whether `action`, on a thread of its own, waits for the mutex. A true answer is certain; a
    /// false one means that the action came to its end.
    static bool waitsFor(QMutex& mutex, const std::function<void()>& action)
    {
        std::promise<void> started;
        mutex.lock();
        std::future<void> ended = std::async(std::launch::async, [&] {
            started.set_value();
            action();
        });
        started.get_future().wait();
        const bool waits =
            ended.wait_for(std::chrono::milliseconds(50)) == std::future_status::timeout;
        mutex.unlock();
        ended.get();
        return waits;
    }

    static void finish(int frameKind)
    {
        driver.frameKind = frameKind;
        dealListWhenFinish();
    }

    static bool isFree(QMutex& mutex)
    {
        if (!mutex.tryLock()) return false;
        mutex.unlock();
        return true;
    }

    static void storeBitOfWord()
    {
        const unsigned char value = 1;
        storeWritesOfArea(OtherRow("1", "16"), 1, text("V_bit"), 3, 1, &value);
    }
};

int timesTold;
int timesFree;
QMutex* hostsOwn;

void noteMutexes(int, int, QString&, int)
{
    const bool queueFree = driver.queueMutex.tryLock();
    if (queueFree) driver.queueMutex.unlock();
    const bool hostFree = hostsOwn->tryLock();
    if (hostFree) hostsOwn->unlock();
    ++timesTold;
    if (queueFree && hostFree) ++timesFree;
}

} // namespace

TEST_F(Locks, TheFlagsAreReadUnderTheHostsMutex)
{
    EXPECT_TRUE(waitsFor(hostMutex, [this] { request(); }));
    EXPECT_TRUE(isFree(hostMutex));
}

TEST_F(Locks, TheFlagsAreLoweredUnderTheHostsMutex)
{
    EXPECT_TRUE(waitsFor(hostMutex, [] { finish(FRAME_RECIPE_DOWNLOAD); }));
    EXPECT_TRUE(waitsFor(hostMutex, [] { finish(FRAME_RECIPE_UPLOAD); }));
    EXPECT_TRUE(isFree(hostMutex));
}

TEST_F(Locks, AFinishedWriteLeavesTheQueueUnderItsMutex)
{
    queueWrites(1);
    EXPECT_TRUE(waitsFor(driver.queueMutex, [] { finish(FRAME_WRITE); }));
    EXPECT_TRUE(isFree(driver.queueMutex));
}

TEST_F(Locks, TheQueueIsScannedUnderItsMutex)
{
    storeBitOfWord();
    EXPECT_TRUE(waitsFor(driver.queueMutex, storeBitOfWord));
    EXPECT_TRUE(isFree(driver.queueMutex));
}

// From here on a test that takes a lock too many never ends.

TEST_F(Locks, AFrameIsBuiltWithoutTheQueuesMutex)
{
    queueWrites(1);
    driver.queueMutex.lock();
    EXPECT_NE("none", request());
    driver.queueMutex.unlock();
}

TEST_F(Locks, APendingFrameIsOfferedWithoutAnyMutex)
{
    queueWrites(1);
    const std::string sent = request();
    hostMutex.lock();
    driver.queueMutex.lock();
    EXPECT_EQ(sent, request());
    EXPECT_EQ(REPLY_RETRY, silence());
    driver.queueMutex.unlock();
    hostMutex.unlock();
}

TEST_F(Locks, AWriteIsQueuedAndStoredWithoutAnyMutex)
{
    hostMutex.lock();
    driver.queueMutex.lock();
    unsigned char values[] = {1, 0};
    for (int i = 0; i < 3; ++i) {
        intf_setData(1, text("MW"), 3000, 1, values, 0);
        intf_setData(1, text("QX"), 0, 2, values, 0);
    }
    _write_FailOrSuc(1, text("MW"), 3000, 1, 0);
    driver.queueMutex.unlock();
    hostMutex.unlock();
    EXPECT_EQ(0, cachedUnit(1, "MW", 3000).writePending);
}

TEST_F(Locks, AFirstWriteOfABitLooksAtNoQueue)
{
    driver.queueMutex.lock();
    storeBitOfWord();
    driver.queueMutex.unlock();
    EXPECT_EQ(0x40u, cachedUnit(1, "V", 0).pendingBitWrites);
}

TEST_F(Locks, TheTwoMutexesAreNeverHeldTogether)
{
    queueWrites(1);
    hostMutex.lock();
    finish(FRAME_WRITE);
    hostMutex.unlock();
    EXPECT_EQ(0, int(driver.writeList.size()));

    raise(RECIPE_UPLOAD_FLAG);
    driver.queueMutex.lock();
    finish(FRAME_RECIPE_UPLOAD);
    driver.queueMutex.unlock();
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
}

TEST_F(Locks, ReadsEndWithoutAnyMutex)
{
    queueOneShotReads(1);
    poll(2);
    hostMutex.lock();
    driver.queueMutex.lock();
    finish(FRAME_ONE_SHOT_READ);
    finish(FRAME_CYCLIC_READ);
    driver.queueMutex.unlock();
    hostMutex.unlock();
    EXPECT_EQ("3001 3000", addresses(driver.readList));
}

TEST_F(Locks, NoMutexIsHeldWhileTheHostIsTold)
{
    initialise(1);
    hostsOwn = &hostMutex;
    timesTold = timesFree = 0;
    intf_setAddrValueChangeCallBack(noteMutexes);

    unsigned char value = 1;
    intf_setData(1, text("QX"), 0, 1, &value, 0); // told of the store
    request();
    silence(); // and of the failure
    KEY_ADDRESS wanted = key(1, "IW", 5, 1);
    intf_addConditionRead(wanted, 0);
    request();
    answerWord(0); // of the end of a one-shot read
    QVector<_RCP_VAR_PRO> records = {recipeVariable(CONTEXT, 1, "MW", 3000, 1, 0)};
    intf_setRcpAddress(records);
    raise(RECIPE_UPLOAD_FLAG);
    request();
    answerWord(1); // of a recipe word
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(4, timesTold);
    EXPECT_EQ(4, timesFree);
}
