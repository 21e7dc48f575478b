#include "exchangeMachineFixture.h"

// Only an echo of the first six bytes with a checksum confirms a write. Identical writes have
// identical echoes.

class ExchangeMachineWriteTest : public InStepTest
{
protected:
    const QByteArray OTHER_VALUE = writeOf(3001, 1235);
    const QByteArray OTHER_REGISTER = writeOf(3002, 1234);
};

TEST_F(ExchangeMachineWriteTest, IsConfirmedByItsFirstSixBytes)
{
    // MODBUS Application Protocol V1.1b3, 6.5, 6.6, 6.11 and 6.12.
    const struct
    {
        const char* request;
        const char* answer;
    } rows[] = {{"010500ACFF00", "010500ACFF00"},
                {"010600010003", "010600010003"},
                {"010F0013000A02CD01", "010F0013000A"},
                {"01100001000204000A0102", "011000010002"}};
    for (const auto& row : rows) {
        const QByteArray request = frameWith(fromHex(row.request));
        EXPECT_EQ(request, ask(request));
        come(frameWith(fromHex(row.answer)));
        ASSERT_EQ(END_ANSWERED, last().end) << row.request;
        EXPECT_EQ(frameWith(fromHex(row.answer)), last().reply);
    }
    EXPECT_EQ(4u, ended.size());
}

TEST_F(ExchangeMachineWriteTest, WriteOfAnotherValueGoesOutAtOnce)
{
    exchange(WRITE);
    EXPECT_EQ(OTHER_VALUE, ask(OTHER_VALUE));
    answer();
    EXPECT_EQ(OTHER_REGISTER, ask(OTHER_REGISTER));
    answer();
    EXPECT_EQ(WRITE, ask(WRITE));
}

TEST_F(ExchangeMachineWriteTest, IdenticalWriteWaitsForAFence)
{
    exchange(WRITE);
    EXPECT_NE(WRITE, ask(WRITE));
    EXPECT_TRUE(isFence);
    answer();
    EXPECT_EQ(WRITE, nextSent());
    answer();
    EXPECT_EQ(Ends({END_ANSWERED, END_ANSWERED}), ends());
}

TEST_F(ExchangeMachineWriteTest, DoubledEchoDoesNotConfirmAnIdenticalWrite)
{
    exchange(WRITE);
    ask(WRITE);
    come(WRITE);
    EXPECT_EQ(1u, ends().size());
    answer(100);
    EXPECT_EQ(WRITE, nextSent());
    EXPECT_EQ(1u, ends().size());
    answer();
    EXPECT_EQ(2u, ends().size());
}

TEST_F(ExchangeMachineWriteTest, LateEchoConfirmsTheRepeatedWrite)
{
    ask(WRITE);
    waitInVain();
    askAgain(WRITE);
    ASSERT_TRUE(isFence);
    come(WRITE);
    EXPECT_EQ(Ends({END_SILENT, END_ANSWERED}), ends());
    EXPECT_TRUE(machine.isFree());
    answer(100);
    EXPECT_TRUE(nextSent().isEmpty());
}

TEST_F(ExchangeMachineWriteTest, LateEchoOfAnIdenticalEarlierWriteDoesNotConfirm)
{
    ask(WRITE);
    waitInVain();
    ask(WRITE);
    ASSERT_TRUE(isFence);
    come(WRITE);
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    EXPECT_FALSE(machine.isFree());
    answer(100);
    EXPECT_EQ(WRITE, nextSent());
    answer();
    EXPECT_EQ(Ends({END_SILENT, END_LATE, END_ANSWERED}), ends());
}

TEST_F(ExchangeMachineWriteTest, LateEchoOfAnotherValueDoesNotConfirm)
{
    ask(WRITE);
    waitInVain();
    ask(OTHER_VALUE);
    ASSERT_TRUE(isFence);
    come(WRITE);
    EXPECT_EQ(Ends({END_SILENT, END_LATE}), ends());
    answer(100);
    EXPECT_EQ(OTHER_VALUE, nextSent());
}

TEST_F(ExchangeMachineWriteTest, EchoOfAnotherValueOrRegisterDoesNotConfirm)
{
    for (const QByteArray& other : {OTHER_VALUE, OTHER_REGISTER}) {
        ask(WRITE);
        behindFences();
        const size_t before = ends().size();
        come(other);
        EXPECT_EQ(before, ends().size());
        waitInVain();
        EXPECT_EQ(END_UNUSABLE, ends().back());
    }
}

TEST_F(ExchangeMachineWriteTest, WriteIsRepeatedBehindAFenceAfterTheEchoOfAnotherValue)
{
    ask(WRITE);
    come(OTHER_VALUE);
    come(WRITE, 100);
    EXPECT_TRUE(ends().empty());
    nextSent();
    EXPECT_TRUE(isFence);
    EXPECT_EQ(WRITE, behindFences());
    answer();
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
}

TEST_F(ExchangeMachineWriteTest, DamagedEchoDoesNotConfirm)
{
    ask(WRITE);
    QByteArray damaged = WRITE;
    damaged[5] = '\xD3';
    come(damaged);
    waitInVain();
    EXPECT_EQ(Ends{END_UNUSABLE}, ends());
}

TEST_F(ExchangeMachineWriteTest, ReadBetweenIdenticalWritesReplacesTheFence)
{
    exchange(WRITE);
    exchange(READ_A);
    EXPECT_EQ(WRITE, ask(WRITE));
}
