#include "exchangeMachineFixture.h"

#include <map>
#include <random>

namespace {

QByteArray closed(QByteArray frame)
{
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < frame.size(); ++i) {
        remainder ^= static_cast<unsigned char>(frame.at(i));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) ? (remainder >> 1) ^ 0xA001u : remainder >> 1;
    }
    frame.append(static_cast<char>(remainder & 0xFFu));
    frame.append(static_cast<char>(remainder >> 8));
    return frame;
}

/// Polls registers 0 to 9 one by one, in requests of one shape, or of two by turns; register n
/// holds n.
class PollingDriver : public DriverCalls
{
public:
    explicit PollingDriver(int shapes) : m_shapes(shapes) {}

    int words() const
    {
        return 1 + wanted % m_shapes;
    }

    int getSendFrame(FRAME_PRO* frame) override
    {
        const char body[] = {1, 3, 0, static_cast<char>(wanted), 0, static_cast<char>(words())};
        *frame = frameOf(closed(QByteArray(body, sizeof body)), 5 + 2 * words());
        return 1;
    }

    int dealRcvFrame(QByteArray& reply, QString&) override
    {
        const bool good = reply.size() == 5 + 2 * words();
        if (good && reply.at(4) != wanted) ++wrong;
        if (good) ++accepted;
        if (!good && ++failures < RETRY_LIMIT) return REPLY_RETRY;
        failures = 0;
        wanted = (wanted + 1) % 10;
        return good ? REPLY_ACCEPTED : REPLY_GIVEN_UP;
    }

    int wanted = 0;
    int failures = 0;
    int wrong = 0;
    int accepted = 0;

private:
    const int m_shapes;
};

/// What a station answers.
QByteArray answerTo(const QByteArray& request, int firstRefused)
{
    const char number = request.at(3);
    if (number >= firstRefused) return closed(QByteArray("\x01\x83\x02", 3));
    QByteArray body("\x01\x03", 2);
    body.append(static_cast<char>(2 * request.at(5)));
    for (int i = 0; i < request.at(5); ++i)
        body.append('\0').append(static_cast<char>(number + i));
    return closed(body);
}

struct LateRun
{
    int wrong = 0;
    int accepted = 0;
    int refused = 0;
    int wronglyRefused = 0; ///< registers that the station does not refuse
};

/// One reply of twenty is lost, and a quarter of the others late by up to another time-out.
LateRun runLate(int exchanges, int shapes, int firstRefused)
{
    ExchangeMachine::Times times;
    times.answer = ANSWER;
    const LineTiming timing((LineSettings()));
    const qint64 timeout = ANSWER + timing.frame(7);
    PollingDriver driver(shapes);
    ExchangeMachine machine(driver, timing, times);
    std::mt19937 random(4);
    std::multimap<qint64, QByteArray> onTheWay;
    qint64 now = 0;
    qint64 lastAnswer = 0;
    LateRun run;
    int done = 0;
    const auto takeFinished = [&] {
        const auto finished = machine.takeFinished();
        if (!finished) return;
        ++done;
        if (finished->exceptionCode == 0) return;
        ++run.refused;
        if (finished->frame.sendBuf[3] < firstRefused) ++run.wronglyRefused;
    };
    while (done < exchanges) {
        const ExchangeMachine::Step step = machine.advance(now);
        takeFinished();
        if (!step.send.isEmpty() && random() % 20 != 0) {
            const bool late = random() % 4 == 0;
            const qint64 most = late ? timeout * 19 / 10 : timeout / 2;
            const qint64 delay = 1000 + qint64(random()) % (most - 1000);
            // A station answers in the order of the requests.
            lastAnswer = std::max(lastAnswer + 1, now + timing.frame(8) + delay);
            onTheWay.emplace(lastAnswer, answerTo(step.send, firstRefused));
        }
        if (!onTheWay.empty() && onTheWay.begin()->first <= step.wakeAt) {
            now = std::max(now, onTheWay.begin()->first);
            machine.received(onTheWay.begin()->second, now);
            onTheWay.erase(onTheWay.begin());
            takeFinished();
        } else {
            now = step.wakeAt;
        }
    }
    run.wrong = driver.wrong;
    run.accepted = driver.accepted;
    return run;
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
    const LateRun run = runLate(1000000, 1, 10);
    EXPECT_EQ(0, run.wrong);
    EXPECT_GT(run.accepted, 500000);
}

TEST(ExchangeMachineLateReplies, NoneIsTakenForAnotherWhereSomeAreRefused)
{
    const LateRun run = runLate(200000, 2, 7);
    EXPECT_EQ(0, run.wrong);
    EXPECT_EQ(0, run.wronglyRefused);
    EXPECT_GT(run.accepted, 80000);
    EXPECT_GT(run.refused, 40000);
}
