#include "driverFixture.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>

// The records pass between host and driver by value, so the widths of their fields are fixed.
static_assert(std::is_same<decltype(VARIABLE::varId), qint32>::value, "");
static_assert(std::is_same<decltype(VARIABLE::station), qint32>::value, "");
static_assert(std::is_same<decltype(VARIABLE::addr), qint32>::value, "");
static_assert(std::is_same<decltype(VARIABLE::count), qint32>::value, "");
static_assert(sizeof(VARIABLE::value) == 1024, "");
static_assert(sizeof(FRAME_PRO::sendBuf) == 1024, "");
static_assert(std::is_same<decltype(FRAME_PRO::recvLen), qint32>::value, "");
static_assert(std::is_same<decltype(KEY_ADDRESS::unitMode), qint32>::value, "");
static_assert(sizeof(KEY_ADDRESS::data) == 1024, "");
static_assert(std::is_same<decltype(_DATA_::writePending), quint8>::value, "");
static_assert(std::is_same<decltype(_DATA_::pendingBitWrites), quint32>::value, "");
static_assert(std::is_same<decltype(_DATA_::monitorFlags), quint32>::value, "");
static_assert(std::is_same<decltype(_DATA_::bitMonitorMask), quint32>::value, "");
static_assert(sizeof(_DATA_::readImage) == 4 && sizeof(_DATA_::writeImage) == 4, "");
static_assert(std::is_same<decltype(Protocol::hostArg1), quint32>::value, "");
static_assert(!std::is_polymorphic<Protocol>::value, "the state has no virtual operations");

class DriverState : public DriverTest
{
};

namespace {

/// An object built where every byte was set before, so that a forgotten field shows.
template <typename T> class OnUsedMemory
{
public:
    OnUsedMemory()
    {
        std::memset(place, 0xA5, sizeof place);
        object = new (place) T();
    }
    ~OnUsedMemory() { destroy(); }

    OnUsedMemory(const OnUsedMemory&) = delete;
    OnUsedMemory& operator=(const OnUsedMemory&) = delete;

    void destroy()
    {
        if (object != nullptr) object->~T();
        object = nullptr;
    }

    T* operator->() { return object; }

private:
    alignas(T) unsigned char place[sizeof(T)];
    T* object;
};

bool inThisOrder(std::initializer_list<const void*> fields)
{
    return std::is_sorted(fields.begin(), fields.end(), std::less<const void*>());
}

template <size_t N> bool isZero(const unsigned char (&block)[N])
{
    return std::all_of(block, block + N, [](unsigned char byte) { return byte == 0; });
}

} // namespace

TEST_F(DriverState, StartsWithEmptyLists)
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
}

TEST_F(DriverState, StartsWithEmptyTexts)
{
    OnUsedMemory<Protocol> made;
    EXPECT_TRUE(made->propertyPage.isEmpty());
    EXPECT_TRUE(made->curVar.regName.isEmpty());
    EXPECT_TRUE(made->condVar.regName.isEmpty());
}

TEST_F(DriverState, StartsWithCountersAtZero)
{
    OnUsedMemory<Protocol> made;
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
}

TEST_F(DriverState, StartsWithoutProperties)
{
    OnUsedMemory<Protocol> made;
    EXPECT_EQ(0, made->callbackContext);
    EXPECT_EQ(0, made->localOnly);
    EXPECT_EQ(0, made->propC);
    EXPECT_EQ(0, made->retryLimit);
    EXPECT_EQ(0, made->mergeLimit);
    EXPECT_EQ(0, made->maxBitBlockLen);
    EXPECT_EQ(0, made->maxWordBlockLen);
}

TEST_F(DriverState, StartsWithoutAHost)
{
    OnUsedMemory<Protocol> made;
    EXPECT_TRUE(made->valueChangeCallBack == nullptr);
    EXPECT_TRUE(made->hostShared == nullptr);
    EXPECT_TRUE(made->rcpBuffer == nullptr);
    EXPECT_TRUE(made->hostMutex == nullptr);
    EXPECT_EQ(0u, made->hostArg1);
}

TEST_F(DriverState, CurrentVariableStartsEmpty)
{
    OnUsedMemory<Protocol> made;
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
    made->destroy();
    EXPECT_EQ(1, shared[RECIPE_UPLOAD_FLAG]);
    EXPECT_EQ(2, recipe[0]);
    ASSERT_TRUE(hostMutex.tryLock());
    hostMutex.unlock();
}

TEST_F(DriverState, StateFieldsAreInOrder)
{
    const Protocol& d = driver;
    EXPECT_TRUE(inThisOrder(
        {&d.valueChangeCallBack, &d.callbackContext, &d.localOnly,    &d.propC,
         &d.retryLimit,          &d.mergeLimit,      &d.hostShared,   &d.hostArg1,
         &d.rcpBuffer,           &d.hostMutex,       &d.readList,     &d.writeList,
         &d.condReadList,        &d.dataAreas,       &d.rcpVarsStaged, &d.rcpVars,
         &d.blockStartIndex,     &d.condVar,         &d.regNames,     &d.curVar,
         &d.curReadList,         &d.frameKind,       &d.priorityCount, &d.handshakePending,
         &d.failCount,           &d.maxBitBlockLen,  &d.maxWordBlockLen, &d.commFailed,
         &d.frameIndex,          &d.initFlag,        &d.frameQueue,   &d.queueMutex,
         &d.rcpIndex,            &d.propertyPage,    &d.spareList,    &d.varsInFrame,
         &d.spareFlag}));
}

TEST_F(DriverState, VariableFieldsAreInOrder)
{
    const VARIABLE v;
    EXPECT_TRUE(inThisOrder({&v.varId, &v.station, &v.regName, &v.addr, &v.count, &v.value}));
}

TEST_F(DriverState, FrameFieldsAreInOrder)
{
    const FRAME_PRO f;
    EXPECT_TRUE(inThisOrder(
        {&f.sendBuf, &f.sendLen, &f.recvLen, &f.dataStart, &f.itemCount, &f.spare, &f.var}));
}

TEST_F(DriverState, KeyFieldsAreInOrder)
{
    const KEY_ADDRESS k;
    EXPECT_TRUE(inThisOrder({&k.label, &k.param1, &k.param2, &k.station, &k.regName, &k.typeText,
                             &k.addr, &k.unitMode, &k.count, &k.data}));
}

TEST_F(DriverState, CachedUnitFieldsAreInOrder)
{
    const _DATA_ u;
    EXPECT_TRUE(inThisOrder({&u.spare, &u.writePending, &u.pendingBitWrites, &u.monitorFlags,
                             &u.bitMonitorMask, &u.station, &u.regName, &u.address, &u.readImage,
                             &u.writeImage}));
}

TEST_F(DriverState, RecipeVariableFieldsAreInOrder)
{
    const _RCP_VAR_PRO r;
    EXPECT_TRUE(inThisOrder(
        {&r.linkNo, &r.station, &r.regName, &r.addr, &r.count, &r.bufOffset, &r.spare}));
}

TEST_F(DriverState, VariableStartsAtZero)
{
    OnUsedMemory<VARIABLE> made;
    EXPECT_EQ(0, made->varId);
    EXPECT_EQ(0, made->station);
    EXPECT_TRUE(made->regName.isEmpty());
    EXPECT_EQ(0, made->addr);
    EXPECT_EQ(0, made->count);
    EXPECT_TRUE(isZero(made->value));
}

TEST_F(DriverState, FrameStartsAtZero)
{
    OnUsedMemory<FRAME_PRO> made;
    EXPECT_TRUE(isZero(made->sendBuf));
    EXPECT_EQ(0, made->sendLen);
    EXPECT_EQ(0, made->recvLen);
    EXPECT_EQ(0, made->dataStart);
    EXPECT_EQ(0, made->itemCount);
    EXPECT_EQ(0, made->spare);
    EXPECT_TRUE(made->var.regName.isEmpty());
}

TEST_F(DriverState, KeyStartsAtZero)
{
    OnUsedMemory<KEY_ADDRESS> made;
    EXPECT_TRUE(made->label.isEmpty() && made->regName.isEmpty() && made->typeText.isEmpty());
    EXPECT_EQ(0, made->param1);
    EXPECT_EQ(0, made->param2);
    EXPECT_EQ(0, made->station);
    EXPECT_EQ(0, made->addr);
    EXPECT_EQ(0, made->unitMode);
    EXPECT_EQ(0, made->count);
    EXPECT_TRUE(isZero(made->data));
}

TEST_F(DriverState, CachedUnitStartsAtZero)
{
    OnUsedMemory<_DATA_> made;
    EXPECT_EQ(0, made->spare);
    EXPECT_EQ(0, made->writePending);
    EXPECT_EQ(0u, made->pendingBitWrites);
    EXPECT_EQ(0u, made->monitorFlags);
    EXPECT_EQ(0u, made->bitMonitorMask);
    EXPECT_EQ(0, made->station);
    EXPECT_TRUE(made->regName.isEmpty());
    EXPECT_EQ(0, made->address);
    EXPECT_TRUE(isZero(made->readImage));
    EXPECT_TRUE(isZero(made->writeImage));
}

TEST_F(DriverState, RecipeVariableStartsAtZero)
{
    OnUsedMemory<_RCP_VAR_PRO> made;
    EXPECT_EQ(0, made->linkNo);
    EXPECT_EQ(0, made->station);
    EXPECT_TRUE(made->regName.isEmpty());
    EXPECT_EQ(0, made->addr);
    EXPECT_EQ(0, made->count);
    EXPECT_EQ(0, made->bufOffset);
    EXPECT_EQ(0, made->spare);
}

TEST_F(DriverState, ACopiedFrameCarriesItsOwnVariable)
{
    FRAME_PRO original;
    original.var = variable(1, "MW", 3000, 1, {0x34, 0x12});
    FRAME_PRO copy = original;
    original.var.value[0] = 0x99;
    original.var.regName = text("QW");
    EXPECT_EQ(0x34, copy.var.value[0]);
    EXPECT_EQ("MW", copy.var.regName.toStdString());
}
