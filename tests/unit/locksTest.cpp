#include "cacheHelpers.h"
#include "exchangeTest.h"
#include "localStore.h"
#include "replyHandling.h"
#include "watchedMemory.h"
#include "writeCompletion.h"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <future>
#include <vector>

namespace {

bool isFree(QMutex& mutex)
{
    if (!mutex.tryLock()) return false;
    mutex.unlock();
    return true;
}

/// Accesses to one place in memory, and how many of them came while a mutex was held.
struct Accesses
{
    int all = 0;
    int underMutex = 0;

    /// Counts one access; to be called at its very moment.
    void count(QMutex& mutex)
    {
        ++all;
        if (!isFree(mutex)) ++underMutex;
    }
};

class Locks : public ExchangeTest
{
protected:
    /// Whether `action` comes to its end while this thread holds `mutexes`. Only an action that
    /// needs one of them makes the test wait.
    static bool endsWhileHeld(const std::vector<QMutex*>& mutexes,
                              const std::function<void()>& action)
    {
        for (QMutex* mutex : mutexes)
            mutex->lock();
        std::future<void> ended = std::async(std::launch::async, action);
        const bool ends = ended.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
        for (QMutex* mutex : mutexes)
            mutex->unlock();
        ended.get();
        return ends;
    }

    std::vector<QMutex*> bothMutexes()
    {
        return {&hostMutex, &driver.queueMutex};
    }

    static void finish(int frameKind)
    {
        driver.frameKind = frameKind;
        dealListWhenFinish();
    }

    /// "QW" with its characters and the count of its owners on one page. The count stands before
    /// the characters, and changes when an entry that holds the text is taken off a list.
    static QString textOnOnePage()
    {
        const size_t head = 64;
        std::vector<QString> taken;
        while (true) {
            QString made = text("Q");
            made += QLatin1Char('W');
            if (reinterpret_cast<uintptr_t>(made.constData()) % pageBytes() >= head) return made;
            taken.push_back(made); // keeps its place, so that the next text gets another one
        }
    }

    static void storeBitOfWord()
    {
        const unsigned char value = 1;
        storeWritesOfArea(OtherRow("1", "16"), 1, text("V_bit"), 3, 1, &value);
    }
};

/// A shared block whose two flags lie on a page each: an access to one is told from one to the
/// other.
class SharedBlockLocks : public Locks
{
protected:
    SharedBlockLocks() : pages(RECIPE_UPLOAD_FLAG / pageBytes() + 2)
    {
        block = pages.page(RECIPE_UPLOAD_FLAG / pageBytes() + 1) - RECIPE_UPLOAD_FLAG;
        driver.hostShared = block;
    }

    OwnPages pages;
    unsigned char* block;
};

int timesTold;
int timesFree;
QMutex* hostsOwn;

void noteMutexes(int, int, QString&, int)
{
    ++timesTold;
    if (isFree(driver.queueMutex) && isFree(*hostsOwn)) ++timesFree;
}

} // namespace

TEST_F(SharedBlockLocks, BothFlagsAreReadWhileTheHostsMutexIsHeld)
{
    Accesses download;
    Accesses upload;
    {
        const MemoryWatch first(block + RECIPE_DOWNLOAD_FLAG, Watched::READS_AND_WRITES,
                                [&] { download.count(hostMutex); });
        const MemoryWatch second(block + RECIPE_UPLOAD_FLAG, Watched::READS_AND_WRITES,
                                 [&] { upload.count(hostMutex); });
        request();
    }
    EXPECT_EQ(1, download.all);
    EXPECT_EQ(1, download.underMutex);
    EXPECT_EQ(1, upload.all);
    EXPECT_EQ(1, upload.underMutex);
    EXPECT_TRUE(isFree(hostMutex));
}

TEST_F(SharedBlockLocks, TheFlagsAreReadBeforeAHandshakeIsChosen)
{
    driver.handshakePending = 1;
    Accesses download;
    int kindWhenRead = -1;
    {
        const MemoryWatch watch(block + RECIPE_DOWNLOAD_FLAG, Watched::READS_AND_WRITES, [&] {
            download.count(hostMutex);
            kindWhenRead = driver.frameKind;
        });
        request();
    }
    EXPECT_EQ(1, download.underMutex);
    EXPECT_EQ(FRAME_IDLE, kindWhenRead);
    EXPECT_EQ(FRAME_HANDSHAKE, driver.frameKind);
}

TEST_F(SharedBlockLocks, AFlagIsLoweredWhileTheHostsMutexIsHeld)
{
    for (RecipeFlag flag : {RECIPE_DOWNLOAD_FLAG, RECIPE_UPLOAD_FLAG}) {
        SCOPED_TRACE(int(flag));
        block[flag] = 1;
        Accesses accesses;
        {
            const MemoryWatch watch(block + flag, Watched::WRITES,
                                    [&] { accesses.count(hostMutex); });
            finish(flag == RECIPE_DOWNLOAD_FLAG ? FRAME_RECIPE_DOWNLOAD : FRAME_RECIPE_UPLOAD);
        }
        EXPECT_EQ(0, block[flag]);
        EXPECT_EQ(1, accesses.all);
        EXPECT_EQ(1, accesses.underMutex);
        EXPECT_TRUE(isFree(hostMutex));
    }
}

TEST_F(Locks, AFinishedWriteLeavesTheQueueWhileItsMutexIsHeld)
{
    const QString area = textOnOnePage();
    driver.writeList.append(variable(1, "", 5, 1));
    driver.writeList[0].regName = area;
    Accesses accesses;
    {
        const MemoryWatch watch(area.constData(), Watched::WRITES,
                                [&] { accesses.count(driver.queueMutex); });
        finish(FRAME_WRITE);
    }
    EXPECT_EQ(0, int(driver.writeList.size()));
    EXPECT_EQ(1, accesses.all);
    EXPECT_EQ(1, accesses.underMutex);
    EXPECT_TRUE(isFree(driver.queueMutex));
}

TEST_F(Locks, TheQueueIsScannedWhileItsMutexIsHeld)
{
    storeBitOfWord();
    const OwnPages pages(1);
    const QString name = text("V_bit");
    std::memcpy(pages.page(0), name.constData(), size_t(name.size()) * sizeof(QChar));
    driver.writeList.append(variable(1, "", 3, 1));
    driver.writeList[0].regName =
        QString::fromRawData(reinterpret_cast<const QChar*>(pages.page(0)), int(name.size()));
    Accesses accesses;
    {
        const MemoryWatch watch(pages.page(0), Watched::READS_AND_WRITES,
                                [&] { accesses.count(driver.queueMutex); });
        storeBitOfWord();
    }
    EXPECT_EQ(1, accesses.all);
    EXPECT_EQ(1, accesses.underMutex);
    EXPECT_TRUE(isFree(driver.queueMutex));
    driver.writeList.clear(); // the text's characters end with the pages
}

TEST_F(Locks, AnEmptyQueueIsNotLocked)
{
    EXPECT_TRUE(endsWhileHeld({&driver.queueMutex}, [] { finish(FRAME_WRITE); }));
}

TEST_F(Locks, AFrameIsBuiltWithoutTheQueuesMutex)
{
    queueWrites(1);
    std::string sent;
    EXPECT_TRUE(endsWhileHeld({&driver.queueMutex}, [&] { sent = request(); }));
    EXPECT_EQ(hex(withChecksum({1, 6, 0, 0, 0, 0})), sent);
}

TEST_F(Locks, APendingFrameIsOfferedWithoutAnyMutex)
{
    queueWrites(1);
    const std::string sent = request();
    std::string offered;
    int result = -1;
    EXPECT_TRUE(endsWhileHeld(bothMutexes(), [&] {
        offered = request();
        result = silence();
    }));
    EXPECT_EQ(sent, offered);
    EXPECT_EQ(REPLY_RETRY, result);
}

TEST_F(Locks, AWriteIsQueuedAndStoredWithoutAnyMutex)
{
    EXPECT_TRUE(endsWhileHeld(bothMutexes(), [] {
        unsigned char values[] = {1, 0};
        for (int i = 0; i < 3; ++i) {
            intf_setData(1, text("MW"), 3000, 1, values, 0);
            intf_setData(1, text("QX"), 0, 2, values, 0);
        }
        _write_FailOrSuc(1, text("MW"), 3000, 1, 0);
    }));
    EXPECT_EQ(0, cachedUnit(1, "MW", 3000).writePending);
}

TEST_F(Locks, AFirstWriteOfABitLooksAtNoQueue)
{
    EXPECT_TRUE(endsWhileHeld({&driver.queueMutex}, storeBitOfWord));
    EXPECT_EQ(0x40u, cachedUnit(1, "V", 0).pendingBitWrites);
}

TEST_F(Locks, AFinishedWriteLeavesTheQueueWithoutTheHostsMutex)
{
    queueWrites(1);
    EXPECT_TRUE(endsWhileHeld({&hostMutex}, [] { finish(FRAME_WRITE); }));
    EXPECT_EQ(0, int(driver.writeList.size()));
}

TEST_F(Locks, AFlagIsLoweredWithoutTheQueuesMutex)
{
    raise(RECIPE_UPLOAD_FLAG);
    EXPECT_TRUE(endsWhileHeld({&driver.queueMutex}, [] { finish(FRAME_RECIPE_UPLOAD); }));
    EXPECT_EQ(0, shared[RECIPE_UPLOAD_FLAG]);
}

TEST_F(Locks, ReadsEndWithoutAnyMutex)
{
    queueOneShotReads(1);
    poll(2);
    EXPECT_TRUE(endsWhileHeld(bothMutexes(), [] {
        finish(FRAME_ONE_SHOT_READ);
        finish(FRAME_CYCLIC_READ);
    }));
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
