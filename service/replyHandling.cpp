#include "replyHandling.h"

#include "cappedList.h"
#include "changeNotification.h"
#include "driverState.h"
#include "readMarks.h"
#include "replyCheck.h"
#include "replyDecoding.h"
#include "retries.h"
#include "writeCompletion.h"

#include <QMutexLocker>

// Ends the exchange of the frame in flight, which is the head of frameQueue: its reply is accepted,
// or rejected retryLimit times. frameKind names the list whose head the frame came from; the entry
// leaves or rotates at the end of the exchange, not before.

// Arguments of the callback at the end of the newest one-shot read.
enum { ONE_SHOT_READ_DONE = 0, ONE_SHOT_READ_FAILED = -1, NO_CONTEXT = -1, NO_STATION = -1 };

int dealReadFrameReturnSaveData(QByteArray reply)
{
    const FRAME_PRO& frame = driver.frameQueue.at(0);
    analyzeFrameOfVal(reply, frame.itemCount, frame.dataStart, frame.var);
    return 0;
}

static void finishWrite()
{
    if (driver.writeList.isEmpty()) return;
    QMutexLocker locker(&driver.queueMutex);
    driver.writeList.removeFirst();
}

/// Tells the host that the read at the head of its list has ended.
/// @return false when the callback took the read off the list, for example by a new start
static bool tellOneShotEnd(bool failed)
{
    driver.condReadList[0].value[0] = READ_MARK;
    notifyHost(NO_CONTEXT, NO_STATION, QLatin1String("-1"),
               failed ? ONE_SHOT_READ_FAILED : ONE_SHOT_READ_DONE);
    return isOneShotEndTold();
}

static void finishOneShotRead()
{
    if (driver.condReadList.isEmpty()) return;
    const bool failed = driver.commFailed != 0;
    const bool isToldOf =
        namesSameBlock(driver.condReadList.at(0), driver.condVar) && !isOneShotEndTold();
    if (isToldOf && !tellOneShotEnd(failed)) return;
    if (failed)
        driver.condReadList.clear();
    else
        driver.condReadList.removeFirst();
}

/// A block that fails is rotated too, so that it does not hold up the others.
static void finishCyclicRead()
{
    if (driver.readList.size() < 2) return;
    driver.readList.append(driver.readList.at(0));
    driver.readList.removeFirst();
}

static void finishRecipeBlock(RecipeFlag flag)
{
    if (driver.commFailed == 0) {
        ++driver.rcpIndex;
        if (driver.rcpIndex < driver.rcpVars.size()) return;
    }
    driver.rcpIndex = 0;
    if (driver.hostShared == 0) return;
    QMutexLocker locker(driver.hostMutex);
    driver.hostShared[flag] = 0;
}

void dealListWhenFinish()
{
    switch (driver.frameKind) {
    case FRAME_WRITE:
        return finishWrite();
    case FRAME_ONE_SHOT_READ:
        return finishOneShotRead();
    case FRAME_CYCLIC_READ:
        return finishCyclicRead();
    case FRAME_RECIPE_DOWNLOAD:
        return finishRecipeBlock(RECIPE_DOWNLOAD_FLAG);
    case FRAME_RECIPE_UPLOAD:
        return finishRecipeBlock(RECIPE_UPLOAD_FLAG);
    default:
        return;
    }
}

void completeWrite(const VARIABLE& var, int ok)
{
    if (driver.frameKind == FRAME_WRITE)
        _write_FailOrSuc(var.station, var.regName, var.addr, var.count, ok);
}

/// Stores what the read in flight has brought.
/// @return false when the callback took the read out of the queue by a new start
static bool takeInReply(const QByteArray& reply)
{
    driver.frameQueue[0].var.value[0] = READ_MARK;
    dealReadFrameReturnSaveData(reply);
    return isReplyTakenIn();
}

int intf_dealRcvFrame(QByteArray& reply, QString& errorText)
{
    errorText.clear();
    if (driver.frameQueue.isEmpty() || isReplyTakenIn()) return REPLY_NOTHING_PENDING;

    const int length = int(reply.size());
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(reply.constData());
    const int kind = check_rcv_data(bytes, driver.curReadList, length);
    if (kind == REPLY_REJECTED) return rejectReply(length, errorText);
    driver.commFailed = 0;
    if (kind == REPLY_TO_READ) {
        if (!takeInReply(reply)) return REPLY_ACCEPTED;
    } else {
        completeWrite(driver.frameQueue.at(0).var, 1);
    }
    driver.frameQueue.removeFirst();
    const bool over = driver.frameQueue.isEmpty();
    if (over) dealListWhenFinish();
    // A frame that the callback has built meanwhile has failures of its own.
    if (!over || driver.frameQueue.isEmpty()) driver.failCount = 0;
    return REPLY_ACCEPTED;
}
