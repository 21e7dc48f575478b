#include "pollingDriver.h"

#include "exchangeMachineFixture.h"

namespace {

enum { OVERHEAD = 5, DATA_AT = 3 };

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

void appendWord(QByteArray& frame, int word)
{
    frame.append(static_cast<char>(word >> 8)).append(static_cast<char>(word & 0xFF));
}

int wordAt(const QByteArray& frame, int at)
{
    return static_cast<unsigned char>(frame.at(at)) * 256 +
           static_cast<unsigned char>(frame.at(at + 1));
}

} // namespace

int PollingDriver::getSendFrame(FRAME_PRO* frame)
{
    QByteArray request("\x01\x03", 2);
    appendWord(request, block().first);
    appendWord(request, block().words);
    *frame = frameOf(closed(request), OVERHEAD + 2 * block().words);
    return 1;
}

int PollingDriver::dealRcvFrame(QByteArray& reply, QString&)
{
    const bool good = reply.size() == OVERHEAD + 2 * block().words;
    if (good && wordAt(reply, DATA_AT) != block().first) ++wrong;
    if (!good && ++m_failures < m_attempts) return REPLY_RETRY;
    ++(good ? accepted : givenUp);
    m_failures = 0;
    m_next = (m_next + 1) % m_blocks.size();
    return good ? REPLY_ACCEPTED : REPLY_GIVEN_UP;
}

QByteArray answerTo(const QByteArray& request, int firstRefused)
{
    const int first = wordAt(request, 2);
    const int words = wordAt(request, 4);
    if (first >= firstRefused) return closed(QByteArray("\x01\x83\x02", 3));
    QByteArray body("\x01\x03", 2);
    body.append(static_cast<char>(2 * words));
    for (int i = 0; i < words; ++i)
        appendWord(body, first + i);
    return closed(body);
}

PollingWorld::PollingWorld(PollingDriver& driver, const LineTiming& timing,
                           const ExchangeMachine::Times& times)
    : m_machine(driver, timing, times)
{
}

bool PollingWorld::takeFinished()
{
    const auto finished = m_machine.takeFinished();
    if (!finished) return false;
    if (onFinished) onFinished(*finished);
    return true;
}

void PollingWorld::run(int exchanges, const Answer& answer)
{
    while (exchanges > 0) {
        const ExchangeMachine::Step step = m_machine.advance(now);
        if (takeFinished()) --exchanges;
        if (!step.send.isEmpty()) {
            ++sent;
            answer(step.send, step.wakeAt - now);
            continue;
        }
        if (!m_onTheWay.empty() && m_onTheWay.begin()->first <= step.wakeAt) {
            now = std::max(now, m_onTheWay.begin()->first);
            const QByteArray bytes = m_onTheWay.begin()->second;
            m_onTheWay.erase(m_onTheWay.begin());
            m_machine.received(bytes, now);
            if (takeFinished()) --exchanges;
        } else {
            now = step.wakeAt;
        }
    }
}

void PollingWorld::reconnect(qint64 downTime)
{
    m_machine.linkLost();
    now += downTime;
    m_machine.linkOpened(now);
}
