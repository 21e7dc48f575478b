#include "driverFixture.h"
#include "onUsedMemory.h"

#include <algorithm>
#include <type_traits>

static_assert(std::is_aggregate<VARIABLE>::value, "");
static_assert(std::is_aggregate<FRAME_PRO>::value, "");
static_assert(std::is_aggregate<KEY_ADDRESS>::value, "");
static_assert(std::is_aggregate<_RCP_VAR_PRO>::value, "");
static_assert(std::is_aggregate<_DATA_>::value, "");

class Records : public DriverTest
{
};

namespace {

template <size_t N> bool isZero(const unsigned char (&block)[N])
{
    return std::all_of(block, block + N, [](unsigned char byte) { return byte == 0; });
}

} // namespace

TEST_F(Records, VariableFieldsAreInOrder)
{
    const VARIABLE v;
    EXPECT_TRUE(inThisOrder({&v.varId, &v.station, &v.regName, &v.addr, &v.count, &v.value}));
}

TEST_F(Records, FrameFieldsAreInOrder)
{
    const FRAME_PRO f;
    EXPECT_TRUE(inThisOrder(
        {&f.sendBuf, &f.sendLen, &f.recvLen, &f.dataStart, &f.itemCount, &f.spare, &f.var}));
}

TEST_F(Records, KeyFieldsAreInOrder)
{
    const KEY_ADDRESS k;
    EXPECT_TRUE(inThisOrder({&k.label, &k.param1, &k.param2, &k.station, &k.regName, &k.typeText,
                             &k.addr, &k.unitMode, &k.count, &k.data}));
}

TEST_F(Records, CachedUnitFieldsAreInOrder)
{
    const _DATA_ u;
    EXPECT_TRUE(inThisOrder({&u.spare, &u.writePending, &u.pendingBitWrites, &u.monitorFlags,
                             &u.bitMonitorMask, &u.station, &u.regName, &u.address, &u.readImage,
                             &u.writeImage}));
}

TEST_F(Records, RecipeVariableFieldsAreInOrder)
{
    const _RCP_VAR_PRO r;
    EXPECT_TRUE(inThisOrder(
        {&r.linkNo, &r.station, &r.regName, &r.addr, &r.count, &r.bufOffset, &r.spare}));
}

TEST_F(Records, VariableStartsAtZero)
{
    OnUsedMemory<VARIABLE> made;
    EXPECT_EQ(0, made->varId);
    EXPECT_EQ(0, made->station);
    EXPECT_TRUE(made->regName.isEmpty());
    EXPECT_EQ(0, made->addr);
    EXPECT_EQ(0, made->count);
    EXPECT_TRUE(isZero(made->value));
}

TEST_F(Records, FrameStartsAtZero)
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

TEST_F(Records, KeyStartsAtZero)
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

TEST_F(Records, CachedUnitStartsAtZero)
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

TEST_F(Records, RecipeVariableStartsAtZero)
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

TEST_F(Records, AVariableIsMadeFromAListOfItsFields)
{
    const VARIABLE v = {1, 2, text("MW"), 3000, 1, {0x34, 0x12}};
    EXPECT_EQ(1, v.varId);
    EXPECT_EQ(2, v.station);
    EXPECT_EQ("MW", v.regName.toStdString());
    EXPECT_EQ(3000, v.addr);
    EXPECT_EQ(1, v.count);
    EXPECT_EQ(0x34, v.value[0]);
    EXPECT_EQ(0x12, v.value[1]);
    EXPECT_EQ(0, v.value[2]);
}

TEST_F(Records, ACopiedFrameCarriesItsOwnVariable)
{
    FRAME_PRO original;
    original.var = variable(1, "MW", 3000, 1, {0x34, 0x12});
    FRAME_PRO copy = original;
    original.var.value[0] = 0x99;
    original.var.regName = text("QW");
    EXPECT_EQ(0x34, copy.var.value[0]);
    EXPECT_EQ("MW", copy.var.regName.toStdString());
}
