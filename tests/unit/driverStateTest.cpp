#include "driverFixture.h"
#include "onUsedMemory.h"

#include <type_traits>

static_assert(!std::is_polymorphic<Protocol>::value, "the state has no virtual operations");

class DriverState : public DriverTest
{
};

TEST_F(DriverState, StartsWithEmptyListsAndTextsZerosAndNoHost)
{
    OnUsedMemory<Protocol> made;
    EXPECT_TRUE(made->readList.isEmpty());
    EXPECT_TRUE(made->writeList.isEmpty());
    EXPECT_TRUE(made->condReadList.isEmpty());
    EXPECT_TRUE(made->dataAreas.isEmpty());
    EXPECT_TRUE(made->rcpVarsStaged.isEmpty());
    EXPECT_TRUE(made->rcpVars.isEmpty());
    EXPECT_TRUE(made->blockStartIndex.isEmpty());
    EXPECT_TRUE(made->curReadList.isEmpty());
    EXPECT_TRUE(made->frameQueue.isEmpty());
    EXPECT_TRUE(made->spareList.isEmpty());
    EXPECT_TRUE(made->propertyPage.isEmpty());
    EXPECT_TRUE(made->curVar.regName.isEmpty());
    EXPECT_TRUE(made->condVar.regName.isEmpty());
    EXPECT_EQ(0, made->priorityCount);
    EXPECT_EQ(0, made->commFailed);
    EXPECT_EQ(0, made->spareFlag);
    EXPECT_EQ(0, made->rcpIndex);
    EXPECT_EQ(0, made->frameKind);
    EXPECT_EQ(0, made->handshakePending);
    EXPECT_EQ(0, made->failCount);
    EXPECT_EQ(0, made->frameIndex);
    EXPECT_EQ(0, made->varsInFrame);
    EXPECT_EQ(0, made->initFlag);
    EXPECT_EQ(0, made->callbackContext);
    EXPECT_EQ(0, made->localOnly);
    EXPECT_EQ(0, made->propC);
    EXPECT_EQ(0, made->retryLimit);
    EXPECT_EQ(0, made->mergeLimit);
    EXPECT_EQ(0, made->maxBitBlockLen);
    EXPECT_EQ(0, made->maxWordBlockLen);
    EXPECT_TRUE(made->valueChangeCallBack == nullptr);
    EXPECT_TRUE(made->hostShared == nullptr);
    EXPECT_TRUE(made->rcpBuffer == nullptr);
    EXPECT_TRUE(made->hostMutex == nullptr);
    EXPECT_EQ(0u, made->hostArg1);
    EXPECT_EQ(0, made->curVar.station);
    EXPECT_EQ(0, made->curVar.addr);
    EXPECT_EQ(0, made->curVar.count);
}

TEST_F(DriverState, AreaNamesAreInTableOrder)
{
    OnUsedMemory<Protocol> made;
    EXPECT_EQ("MW,IW,QW,MX,IX,QX", made->regNames.join(text(",")).toStdString());
    EXPECT_EQ(6, int(made->regNames.size()));
}

TEST_F(DriverState, QueueMutexIsNotRecursive)
{
    OnUsedMemory<Protocol> made;
    ASSERT_TRUE(made->queueMutex.tryLock());
    EXPECT_FALSE(made->queueMutex.tryLock());
    made->queueMutex.unlock();
}

TEST_F(DriverState, DestructionLeavesTheHostsThingsAlone)
{
    OnUsedMemory<Protocol> made;
    shared[RECIPE_UPLOAD_FLAG] = 1;
    recipe[0] = 2;
    made->hostShared = shared.data();
    made->rcpBuffer = recipe.data();
    made->hostMutex = &hostMutex;
    made->readList.append(variable(1, "MW", 3000, 1));
    made.destroy();
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(2, recipe[0]);
    ASSERT_TRUE(hostMutex.tryLock());
    hostMutex.unlock();
}

TEST_F(DriverState, StateFieldsAreInOrder)
{
    const Protocol& d = driver;
    EXPECT_TRUE(inThisOrder({&d.valueChangeCallBack,
                             &d.callbackContext,
                             &d.localOnly,
                             &d.propC,
                             &d.retryLimit,
                             &d.mergeLimit,
                             &d.hostShared,
                             &d.hostArg1,
                             &d.rcpBuffer,
                             &d.hostMutex,
                             &d.readList,
                             &d.writeList,
                             &d.condReadList,
                             &d.dataAreas,
                             &d.rcpVarsStaged,
                             &d.rcpVars,
                             &d.blockStartIndex,
                             &d.condVar,
                             &d.regNames,
                             &d.curVar,
                             &d.curReadList,
                             &d.frameKind,
                             &d.priorityCount,
                             &d.handshakePending,
                             &d.failCount,
                             &d.maxBitBlockLen,
                             &d.maxWordBlockLen,
                             &d.commFailed,
                             &d.frameIndex,
                             &d.initFlag,
                             &d.frameQueue,
                             &d.queueMutex,
                             &d.rcpIndex,
                             &d.propertyPage,
                             &d.spareList,
                             &d.varsInFrame,
                             &d.spareFlag}));
}
