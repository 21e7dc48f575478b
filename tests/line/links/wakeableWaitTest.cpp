#include "links/wakeableWait.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <fcntl.h>
#include <unistd.h>

#include <thread>

// A wait that should end at once is given no end, so that one that does not hangs the test instead
// of passing late.

namespace {

enum { NOTHING = -1, WITHOUT_END = -1, SHORT = 1000, CLOSED_DESCRIPTOR = 1000000 };

} // namespace

class WakeableWaitTest : public testing::Test
{
protected:
    WakeableWaitTest()
    {
        EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
    }

    ~WakeableWaitTest() override
    {
        close(ends[0]);
        if (ends[1] >= 0) close(ends[1]);
    }

    void writeByte()
    {
        ASSERT_EQ(1, write(ends[1], "x", 1));
    }

    int ends[2] = {NOTHING, NOTHING};
    WakeableWait waiting;
};

TEST_F(WakeableWaitTest, AWakeUpBeforehandEndsTheNextWait)
{
    waiting.wake();
    EXPECT_FALSE(waiting.wait(NOTHING, WITHOUT_END));
}

TEST_F(WakeableWaitTest, AWakeUpFromAnotherThreadEndsTheWait)
{
    std::thread other([this] { waiting.wake(); });
    EXPECT_FALSE(waiting.wait(ends[0], WITHOUT_END));
    other.join();
}

TEST_F(WakeableWaitTest, AByteEndsTheWait)
{
    std::thread other([this] { writeByte(); });
    EXPECT_TRUE(waiting.wait(ends[0], WITHOUT_END));
    other.join();
}

TEST_F(WakeableWaitTest, ATimeOutOfZeroSeesAByteThatIsThere)
{
    EXPECT_FALSE(waiting.wait(ends[0], 0));
    writeByte();
    EXPECT_TRUE(waiting.wait(ends[0], 0));
}

TEST_F(WakeableWaitTest, AWaitForNothingEndsWithItsTime)
{
    EXPECT_FALSE(waiting.wait(NOTHING, 0));
    EXPECT_FALSE(waiting.wait(NOTHING, SHORT));
}

TEST_F(WakeableWaitTest, AByteIsSeenTogetherWithAWakeUp)
{
    writeByte();
    waiting.wake();
    EXPECT_TRUE(waiting.wait(ends[0], WITHOUT_END));
}

TEST_F(WakeableWaitTest, ManyWakeUpsEndOneWait)
{
    for (int i = 0; i < 1000; ++i)
        waiting.wake();
    EXPECT_FALSE(waiting.wait(NOTHING, WITHOUT_END));
    writeByte();
    EXPECT_TRUE(waiting.wait(ends[0], WITHOUT_END));
    EXPECT_TRUE(waiting.wait(ends[0], WITHOUT_END));
}

TEST_F(WakeableWaitTest, AWakeUpEndsOneWaitOnly)
{
    waiting.wake();
    waiting.wait(NOTHING, WITHOUT_END);
    QElapsedTimer clock;
    clock.start();
    EXPECT_FALSE(waiting.wait(NOTHING, SHORT));
    EXPECT_GE(clock.nsecsElapsed(), 1000LL * SHORT);
}

TEST_F(WakeableWaitTest, AnEndThatWasClosedBySomeoneElseShowsAsReadable)
{
    close(ends[1]);
    ends[1] = NOTHING;
    EXPECT_TRUE(waiting.wait(ends[0], WITHOUT_END));
}

TEST_F(WakeableWaitTest, ADescriptorThatIsNoneShowsAsReadable)
{
    EXPECT_TRUE(waiting.wait(CLOSED_DESCRIPTOR, WITHOUT_END));
}
