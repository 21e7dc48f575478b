#include "driverFixture.h"

#include <cstring>

class RecordAssignment : public DriverTest
{
};

namespace {

template <size_t N> void fill(unsigned char (&block)[N])
{
    for (size_t i = 0; i < N; ++i)
        block[i] = static_cast<unsigned char>(7 * i + 1);
}

template <size_t N> bool isFilled(const unsigned char (&block)[N])
{
    unsigned char expected[N];
    fill(expected);
    return std::memcmp(expected, block, N) == 0;
}

VARIABLE filledVariable()
{
    VARIABLE v = variable(2, "QW", 3, 4);
    v.varId = 1;
    fill(v.value);
    return v;
}

void expectFilled(const VARIABLE& v)
{
    EXPECT_EQ(1, v.varId);
    EXPECT_EQ(2, v.station);
    EXPECT_EQ(text("QW"), v.regName);
    EXPECT_EQ(3, v.addr);
    EXPECT_EQ(4, v.count);
    EXPECT_TRUE(isFilled(v.value));
}

FRAME_PRO filledFrame()
{
    FRAME_PRO f;
    fill(f.sendBuf);
    f.sendLen = 5;
    f.recvLen = 6;
    f.dataStart = 7;
    f.itemCount = 8;
    f.spare = 9;
    f.var = filledVariable();
    return f;
}

void expectFilled(const FRAME_PRO& f)
{
    EXPECT_TRUE(isFilled(f.sendBuf));
    EXPECT_EQ(5, f.sendLen);
    EXPECT_EQ(6, f.recvLen);
    EXPECT_EQ(7, f.dataStart);
    EXPECT_EQ(8, f.itemCount);
    EXPECT_EQ(9, f.spare);
    expectFilled(f.var);
}

KEY_ADDRESS filledKey()
{
    KEY_ADDRESS k = key(3, "IX", 4, 6, 5);
    k.label = text("label");
    k.param1 = 1;
    k.param2 = 2;
    k.typeText = text("type");
    fill(k.data);
    return k;
}

void expectFilled(const KEY_ADDRESS& k)
{
    EXPECT_EQ(text("label"), k.label);
    EXPECT_EQ(1, k.param1);
    EXPECT_EQ(2, k.param2);
    EXPECT_EQ(3, k.station);
    EXPECT_EQ(text("IX"), k.regName);
    EXPECT_EQ(text("type"), k.typeText);
    EXPECT_EQ(4, k.addr);
    EXPECT_EQ(5, k.unitMode);
    EXPECT_EQ(6, k.count);
    EXPECT_TRUE(isFilled(k.data));
}

/// Assigns to an empty record, and to itself.
template <typename Record> void expectWholeAfterAssigning(const Record& filled)
{
    Record assigned;
    assigned = filled;
    expectFilled(assigned);
    const Record& itself = assigned;
    assigned = itself;
    expectFilled(assigned);
}

} // namespace

TEST_F(RecordAssignment, OfAVariableTakesEveryField)
{
    expectWholeAfterAssigning(filledVariable());
}

TEST_F(RecordAssignment, OfAFrameTakesEveryField)
{
    expectWholeAfterAssigning(filledFrame());
}

TEST_F(RecordAssignment, OfAKeyTakesEveryField)
{
    expectWholeAfterAssigning(filledKey());
}

TEST_F(RecordAssignment, LeavesTheOtherRecordItsOwnText)
{
    const VARIABLE original = filledVariable();
    VARIABLE assigned;
    assigned = original;
    assigned.regName += QLatin1String("_bit");
    assigned.value[0] = 99;
    expectFilled(original);
}
