#include "exchangeMachineFixture.h"
#include "pollingDriver.h"

#include <cstdio>
#include <random>

namespace {

struct LateRun
{
    int wrong = 0;
    int accepted = 0;
    int refused = 0;
    int wronglyRefused = 0; ///< blocks that the station does not refuse
};

enum Lateness {
    OF_THE_REQUEST, ///< by up to 1.9 times the time-out that the user gave
    OF_THE_ANSWER   ///< by up to two time-outs, however long, from the answer before it
};

/// One request of forty is lost and one answer of forty, and a quarter of the other answers is
/// late, by up to two time-outs of the machine's from its request or from the answer before it.
LateRun runLate(int exchanges, const std::vector<PolledBlock>& blocks, Lateness lateness,
                int firstRefused)
{
    ExchangeMachine::Times times;
    times.answer = ANSWER;
    PollingDriver driver(blocks, RETRY_LIMIT);
    PollingWorld world(driver, LineTiming(LineSettings()), times);
    LateRun run;
    world.onFinished = [&](const FINISHED_EXCHANGE& finished) {
        if (finished.exceptionCode == 0) return;
        ++run.refused;
        if (finished.frame.sendBuf[3] < firstRefused) ++run.wronglyRefused;
    };
    std::mt19937 random(4);
    qint64 lastAnswer = 0;
    world.run(exchanges, [&](const QByteArray& request, qint64 wait) {
        if (random() % 40 == 0) return;
        const qint64 timeOut = lateness == OF_THE_REQUEST ? qint64(ANSWER) : wait - REQUEST_TIME;
        const bool isLate = random() % 4 == 0;
        const qint64 most =
            isLate ? timeOut * (lateness == OF_THE_REQUEST ? 190 : 199) / 100 : timeOut / 2;
        const qint64 took = 1000 + qint64(random()) % (most - 1000);
        const qint64 asked = world.now + REQUEST_TIME;
        // A station answers in the order of the requests.
        lastAnswer = lateness == OF_THE_REQUEST ? std::max(lastAnswer + 1, asked + took)
                                                : std::max(lastAnswer, asked) + took;
        if (random() % 40 != 0) world.come(lastAnswer, answerTo(request, firstRefused));
    });
    run.wrong = driver.wrong;
    run.accepted = driver.accepted;
    return run;
}

/// Ten blocks, the one behind the other, of as many words as there are shapes at most.
std::vector<PolledBlock> blocksOf(int shapes)
{
    std::vector<PolledBlock> blocks;
    for (int i = 0; i < 10; ++i)
        blocks.push_back({i, 1 + i % shapes});
    return blocks;
}

} // namespace

// A refusal names station and function only: 018602C3A1 refuses any write of one word.
class ExchangeMachineLateRefusalTest : public ExchangeMachineTest
{
protected:
    ExchangeMachineLateRefusalTest()
    {
        driver.failures = RETRY_LIMIT - 1;
        driver.queue.push_back(frameOf(ECHO, 8));
        driver.queue.push_back(frameOf(NEXT, 8));
        runUntilSent(0);
        runUntilSent(1000000);
        results.clear();
    }

    const QByteArray NEXT = fromHex("01060BBA00016BCB");
    const QByteArray WRITE_REFUSAL = fromHex("018602C3A1");
};

TEST_F(ExchangeMachineLateRefusalTest, IsNotTakenForTheNextRequests)
{
    ASSERT_EQ(NEXT, sent);
    bytesCome(WRITE_REFUSAL, now + 3000);
    EXPECT_TRUE(results.empty());
    bytesCome(NEXT, now + 3000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
    EXPECT_EQ(NEXT, driver.replies.back());
}

TEST_F(ExchangeMachineLateRefusalTest, DoesNotHideTheReplyThatComesWithIt)
{
    bytesCome(WRITE_REFUSAL + NEXT, now + 5000);
    EXPECT_EQ(std::vector<int>{REPLY_ACCEPTED}, results);
}

TEST_F(ExchangeMachineLateRefusalTest, IsTakenAtTheNextAttemptWhenItWasThisRequestsAfterAll)
{
    for (int i = 0; i < RETRY_LIMIT - 1 && last.exceptionCode == 0; ++i) {
        bytesCome(WRITE_REFUSAL, now + 3000);
        runUntilSent(1000000);
    }
    EXPECT_EQ(2, last.exceptionCode);
}

TEST(ExchangeMachineLateReplies, NoneIsTakenForTheNextRequests)
{
    enum { EXCHANGES = 1000000 };
    const LateRun run = runLate(EXCHANGES, blocksOf(1), OF_THE_ANSWER, 10);
    std::printf("late replies: %d exchanges, %d answered, %d with a wrong value\n", int(EXCHANGES),
                run.accepted, run.wrong);
    EXPECT_EQ(0, run.wrong);
    EXPECT_GT(run.accepted, 500000);
}

TEST(ExchangeMachineLateReplies, NoneIsTakenForAnotherWhereSomeAreRefused)
{
    const LateRun run = runLate(200000, blocksOf(2), OF_THE_REQUEST, 7);
    EXPECT_EQ(0, run.wrong);
    EXPECT_EQ(0, run.wronglyRefused);
    EXPECT_GT(run.accepted, 80000);
    EXPECT_GT(run.refused, 40000);
}
