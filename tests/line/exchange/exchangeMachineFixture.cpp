#include "exchangeMachineFixture.h"

#include <algorithm>

namespace {

enum { READ_HOLDING = 3, READ_INPUT = 4, CHATTER_EVERY = 500 };

enum { MOST_STEPS = 1000, MOST_FENCES = 50 };

} // namespace

QByteArray fromHex(const char* text)
{
    return QByteArray::fromHex(text);
}

QByteArray answerTo(const QByteArray& request)
{
    const int function = byteOf(request, 1);
    if (function != READ_HOLDING && function != READ_INPUT) return frameWith(request.left(6));
    return readReplyOf(request, [](int number) { return number; });
}

QByteArray noise(int bytes)
{
    return QByteArray(bytes, '\x55');
}

ExchangeMachineTest::ExchangeMachineTest(EchoMode echo, const LineTiming& timing)
    : machine(timing, settingsOf(echo))
{
}

ExchangeMachine::Settings ExchangeMachineTest::settingsOf(EchoMode echo)
{
    ExchangeMachine::Settings settings;
    settings.answer = ANSWER;
    settings.turnaround = TURNAROUND;
    settings.echo = echo;
    return settings;
}

QByteArray ExchangeMachineTest::nextSent(qint64 within)
{
    const qint64 end = now + within;
    for (int steps = 0; steps < MOST_STEPS; ++steps) {
        const ExchangeMachine::Step step = machine.advance(now);
        takeEnded();
        if (!step.send.isEmpty()) {
            sent = step.send;
            isFence = step.isFence;
            sentAt = now;
            return sent;
        }
        if (step.isIdle || step.wakeAt > end) return QByteArray();
        now = std::max(now, step.wakeAt);
    }
    ADD_FAILURE() << "the machine never comes to rest";
    return QByteArray();
}

int ExchangeMachineTest::waitInVain()
{
    int fences = 0;
    for (; fences < MOST_FENCES && !nextSent().isEmpty(); ++fences)
        EXPECT_TRUE(isFence);
    EXPECT_TRUE(machine.isFree());
    return fences;
}

std::vector<QByteArray> ExchangeMachineTest::fencesInVain(const QByteArray& request)
{
    std::vector<QByteArray> fences = {ask(request)};
    while (fences.size() < MOST_FENCES && !nextSent().isEmpty())
        fences.push_back(sent);
    EXPECT_TRUE(isFence);
    return fences;
}

QByteArray ExchangeMachineTest::nextFence()
{
    if (nextSent().isEmpty()) askAgain(asked);
    EXPECT_TRUE(isFence);
    return sent;
}

void ExchangeMachineTest::come(const QByteArray& bytes, qint64 after)
{
    now += after;
    machine.received(bytes, now);
    takeEnded();
}

QByteArray ExchangeMachineTest::ask(const QByteArray& request)
{
    asked = request;
    machine.start(request, false, now);
    return nextSent();
}

QByteArray ExchangeMachineTest::askAgain(const QByteArray& request)
{
    asked = request;
    machine.start(request, true, now);
    return nextSent();
}

QByteArray ExchangeMachineTest::behindFences()
{
    for (int fences = 0; isFence && fences < MOST_FENCES; ++fences) {
        answer();
        if (nextSent().isEmpty()) return QByteArray();
    }
    return sent;
}

void ExchangeMachineTest::exchange(const QByteArray& request)
{
    ask(request);
    behindFences();
    answer();
    ASSERT_TRUE(machine.isFree());
    ASSERT_EQ(END_ANSWERED, last().end);
    ASSERT_EQ(answerTo(request), last().reply);
}

void ExchangeMachineTest::bringIntoStep(int station)
{
    machine.startFence(station, 0, now);
    nextSent();
    answer();
    exchange(readOf(3500, 70, station));
    ended.clear();
}

std::vector<ExchangeEnd> ExchangeMachineTest::ends() const
{
    std::vector<ExchangeEnd> found;
    for (const EndedExchange& one : ended) {
        if (!one.isFence) found.push_back(one.end);
    }
    return found;
}

std::vector<ExchangeEnd> ExchangeMachineTest::fenceEnds() const
{
    std::vector<ExchangeEnd> found;
    for (const EndedExchange& one : ended) {
        if (one.isFence) found.push_back(one.end);
    }
    return found;
}

void ExchangeMachineTest::chatterUntilEnded(qint64 from)
{
    const size_t before = ended.size();
    for (now = from; ended.size() == before && now < from + 100 * ANSWER; now += CHATTER_EVERY) {
        machine.received(noise(), now);
        const ExchangeMachine::Step step = machine.advance(now);
        EXPECT_TRUE(step.send.isEmpty());
        takeEnded();
    }
}

void ExchangeMachineTest::takeEnded()
{
    for (const EndedExchange& one : machine.takeEnded())
        ended.push_back(one);
}

EndedExchange ExchangeMachineTest::last() const
{
    const EndedExchange none = {false, -1, END_LATE, false, QByteArray(), -1, QString(), 0};
    return ended.empty() ? none : ended.back();
}

InStepTest::InStepTest(EchoMode echo) : ExchangeMachineTest(echo)
{
    bringIntoStep();
}

void InStepTest::expectOneFence()
{
    if (machine.isFree()) machine.start(READ_LONG, false, now);
    nextSent();
    EXPECT_TRUE(isFence);
    answer();
    EXPECT_FALSE(nextSent().isEmpty());
    EXPECT_FALSE(isFence);
    answer();
    EXPECT_EQ(END_ANSWERED, last().end);
    expectNoFence();
}

void InStepTest::expectNoFence()
{
    const QByteArray request = readOf(3000, 70);
    EXPECT_EQ(request, ask(request));
    answer();
}
