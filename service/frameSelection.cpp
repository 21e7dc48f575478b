#include "driverState.h"
#include "readMarks.h"
#include "recipes.h"
#include "requestFrames.h"

#include <QMutexLocker>

// Chooses and builds the next frame. Writes go before one-shot reads, and one-shot reads before
// cyclic reads. priorityCount caps both, so that a busy panel keeps polling; a cyclic read resets
// it. frameKind and curVar always belong to the frame built last, so that it can be built again.

enum { WRITES_IN_A_ROW = 10, PRIORITY_FRAMES_BEFORE_ONE_SHOT = 3, FLAG_RAISED = 1 };

struct RECIPE_REQUESTS
{
    bool download;
    bool upload;
};

static RECIPE_REQUESTS readRecipeFlags()
{
    RECIPE_REQUESTS requests = {false, false};
    if (driver.hostShared == 0) return requests;
    QMutexLocker locker(driver.hostMutex);
    requests.download = driver.hostShared[RECIPE_DOWNLOAD_FLAG] == FLAG_RAISED;
    requests.upload = driver.hostShared[RECIPE_UPLOAD_FLAG] == FLAG_RAISED;
    return requests;
}

static void buildReadFrame()
{
    // The list keeps its one entry: no allocation for each read.
    while (driver.curReadList.size() > 1)
        driver.curReadList.removeLast();
    if (driver.curReadList.isEmpty())
        driver.curReadList.append(driver.curVar);
    else
        driver.curReadList[0] = driver.curVar;
    driver.varsInFrame = 1;
    const int variables = getReadFrame(driver.curReadList);
    if (driver.frameKind == FRAME_RECIPE_UPLOAD) driver.varsInFrame = variables;
}

static void buildWriteFrame()
{
    driver.varsInFrame = 1;
    getWriteFrame(driver.curVar);
}

/// Builds the frame that frameKind and curVar stand for.
static void buildCurrentFrame()
{
    switch (driver.frameKind) {
    case FRAME_HANDSHAKE:
        return handShakeFrame();
    case FRAME_WRITE:
    case FRAME_RECIPE_DOWNLOAD:
        return buildWriteFrame();
    case FRAME_ONE_SHOT_READ:
    case FRAME_CYCLIC_READ:
    case FRAME_RECIPE_UPLOAD:
        return buildReadFrame();
    default:
        return;
    }
}

/// Takes the next recipe block. With no block left, as after a flag raised without a recipe, the
/// last request is built again.
static void buildRecipeFrame(const RECIPE_REQUESTS& requests)
{
    if (driver.rcpIndex >= driver.rcpVars.size()) return buildCurrentFrame();
    const _RCP_VAR_PRO block = driver.rcpVars.at(driver.rcpIndex);
    driver.frameKind = requests.download ? FRAME_RECIPE_DOWNLOAD : FRAME_RECIPE_UPLOAD;
    rcpAddrToVar(block, driver.curVar, requests.download ? 1 : 0);
    if (isTransferable(block))
        buildCurrentFrame();
    else
        unsendableFrame(driver.curVar);
}

static void buildFrameFor(const QList<VARIABLE>& list, FrameKind kind, int priorityCount)
{
    driver.curVar = list.at(0);
    driver.frameKind = kind;
    driver.priorityCount = priorityCount;
    buildCurrentFrame();
}

static void buildVariableFrame()
{
    const int count = driver.priorityCount;
    if (!driver.writeList.isEmpty() && count < WRITES_IN_A_ROW)
        return buildFrameFor(driver.writeList, FRAME_WRITE, count + 1);
    // A read whose end is being told is over, though still in its list.
    if (!driver.condReadList.isEmpty() && !isOneShotEndTold() &&
        count < PRIORITY_FRAMES_BEFORE_ONE_SHOT)
        return buildFrameFor(driver.condReadList, FRAME_ONE_SHOT_READ, count + 1);
    if (!driver.readList.isEmpty()) return buildFrameFor(driver.readList, FRAME_CYCLIC_READ, 0);
    driver.priorityCount = 0;
    driver.frameKind = FRAME_IDLE;
}

static void buildNextFrame()
{
    const RECIPE_REQUESTS requests = readRecipeFlags();
    if (driver.handshakePending != 0) {
        driver.frameKind = FRAME_HANDSHAKE;
        return buildCurrentFrame();
    }
    if (requests.download || requests.upload) return buildRecipeFrame(requests);
    buildVariableFrame();
}

int intf_getSendFrame(FRAME_PRO* frame)
{
    if (frame == 0) return 0;
    if (driver.frameQueue.isEmpty()) buildNextFrame();
    if (driver.frameQueue.isEmpty()) return 0;
    *frame = driver.frameQueue.at(0);
    return 1;
}
