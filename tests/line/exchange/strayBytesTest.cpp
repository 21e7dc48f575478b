#include "exchangeMachineFixture.h"

#include <algorithm>
#include <cstdio>
#include <random>

// Stray bytes around a good reply. Whatever the bytes are and however they are cut, the caller must
// get the reply alone, in the same exchange, and the request goes out once. Bytes behind a reply
// put a fence ahead of the next request; no stray bytes come around the fence's answer. Frames of
// the MODBUS Application Protocol V1.1b3 (6.3, 6.6).

namespace {

enum { BYTE_VALUES = 256, SAMPLES = 10000, MOST_TRAILING = 3, MOST_STEPS = 50 };

/// A line with stray bytes, and the exchanges over it.
class StrayLine
{
public:
    explicit StrayLine(const QByteArray& request)
        : m_request(request), m_machine(LineTiming(LineSettings()), settings())
    {
        m_machine.linkOpened(0);
    }

    /// Three exchanges with the given stray bytes: the bytes come whole, halved, and one by one.
    void exchangeWith(const QByteArray& ahead, const QByteArray& behind)
    {
        for (const int pieces : {1, 2, 0}) {
            m_machine.start(m_request, false, m_now);
            const QByteArray all = ahead + answerTo(sendRequest()) + behind;
            const int length = int(all.size());
            const int piece = pieces == 0 ? 1 : (length + pieces - 1) / pieces;
            m_now += ANSWERED;
            for (int at = 0; at < length; at += piece)
                m_machine.received(all.mid(at, piece), ++m_now);
            ++cases;
            count();
        }
    }

    int cases = 0;
    int right = 0;
    int wrong = 0;
    int fences = 0;
    int requests = 0;

private:
    static ExchangeMachine::Settings settings()
    {
        ExchangeMachine::Settings made;
        made.answer = ANSWER;
        return made;
    }

    /// Advances the machine until it sends the request, and answers the fences ahead of it.
    QByteArray sendRequest()
    {
        for (int steps = 0; steps < MOST_STEPS; ++steps) {
            const ExchangeMachine::Step step = m_machine.advance(m_now);
            count();
            if (step.send.isEmpty()) {
                m_now = std::max(m_now, step.wakeAt);
                continue;
            }
            ++(step.isFence ? fences : requests);
            if (!step.isFence) return step.send;
            m_now += ANSWERED;
            m_machine.received(answerTo(step.send), m_now);
        }
        return m_request; // the machine never sent the request: not counted
    }

    void count()
    {
        for (const EndedExchange& ended : m_machine.takeEnded()) {
            if (ended.isFence) continue;
            const bool isRight = ended.end == END_ANSWERED && ended.reply == answerTo(m_request);
            ++(isRight ? right : wrong);
        }
    }

    const QByteArray m_request;
    ExchangeMachine m_machine;
    qint64 m_now = 0;
};

QByteArray oneByte(int value)
{
    return QByteArray(1, static_cast<char>(value));
}

QByteArray drawnBytes(std::mt19937& random, int length)
{
    QByteArray bytes(length, '\0');
    for (int i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(random() & 0xFFu);
    return bytes;
}

void runAll(StrayLine& line)
{
    std::mt19937 random(20);
    for (int first = 0; first < BYTE_VALUES; ++first) {
        for (int trailing = 0; trailing <= MOST_TRAILING; ++trailing)
            line.exchangeWith(oneByte(first), drawnBytes(random, trailing));
        line.exchangeWith(QByteArray(), oneByte(first));
        for (int second = 0; second < BYTE_VALUES; ++second)
            line.exchangeWith(oneByte(first) + oneByte(second), drawnBytes(random, second % 4));
    }
    for (int i = 0; i < SAMPLES; ++i)
        line.exchangeWith(drawnBytes(random, 3), drawnBytes(random, i % (MOST_TRAILING + 1)));
}

} // namespace

TEST(StrayBytes, NeverHideAReplyNorBecomePartOfIt)
{
    int cases = 0;
    int right = 0;
    for (const QByteArray& request : {READ_A, WRITE}) {
        StrayLine line(request);
        runAll(line);
        EXPECT_EQ(0, line.wrong);
        EXPECT_EQ(line.cases, line.requests);
        EXPECT_GT(line.fences, line.cases / 2);
        cases += line.cases;
        right += line.right;
    }
    std::printf("stray bytes: %d cases, %d right\n", cases, right);
    EXPECT_EQ(2 * 3 * (256 * 5 + 65536 + 10000), cases);
    EXPECT_EQ(cases, right);
}
