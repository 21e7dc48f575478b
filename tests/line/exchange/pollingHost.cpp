#include "pollingHost.h"

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

enum {
    DATA_AT = 3,
    COUNT_AT = 4,
    REGISTER_AT = 2,
    WRITE_REGISTER = 6,
    WRITTEN = 6000,
    KEPT = 1000
};

bool isWrite(const QByteArray& request)
{
    return byteOf(request, 1) == WRITE_REGISTER;
}

} // namespace

ExchangeMachine::Settings settingsOf(qint64 answer)
{
    ExchangeMachine::Settings settings;
    settings.answer = answer;
    settings.seed = 7;
    return settings;
}

void print(const char* what, const PollRun& run)
{
    std::printf("%s: %d answered, %d confirmed, %d refused, %d given up, %d sent, %d fences\n",
                what, run.answered, run.confirmed, run.refused, run.givenUp, run.sent, run.fences);
}

QByteArray readOf(int first, int count, int station)
{
    QByteArray request;
    request.append(static_cast<char>(station));
    request.append(static_cast<char>(first < 1000 ? 4 : 3));
    putWord(request, first);
    putWord(request, count);
    return frameWith(request);
}

QByteArray writeOf(int reg, int value, int station)
{
    QByteArray request;
    request.append(static_cast<char>(station));
    request.append(static_cast<char>(WRITE_REGISTER));
    putWord(request, reg);
    putWord(request, value);
    return frameWith(request);
}

std::vector<QByteArray> wordsApart(int station)
{
    std::vector<QByteArray> requests;
    for (int i = 0; i < 20; ++i)
        requests.push_back(readOf(3000 + 200 * i, 1 + i % 2, station));
    return requests;
}

std::vector<QByteArray> fullBlocks()
{
    std::vector<QByteArray> requests;
    for (int i = 0; i < 16; ++i)
        requests.push_back(readOf(3000 + 125 * i, 125));
    return requests;
}

PollingHost::PollingHost(OrderlyPeer& peer, const LineTiming& timing,
                         const ExchangeMachine::Settings& settings)
    : machine(timing, settings), m_peer(peer), m_timing(timing)
{
    machine.linkOpened(0);
}

void PollingHost::reconnect(qint64 downTime)
{
    machine.linkLost();
    m_isRepeat = false;
    now += downTime;
    machine.linkOpened(now);
}

void PollingHost::run(int requests)
{
    m_ended = 0;
    while (m_ended < requests)
        step(std::numeric_limits<qint64>::max());
}

void PollingHost::runFor(qint64 duration)
{
    const qint64 end = now + duration;
    while (now < end)
        step(end);
}

void PollingHost::startNext()
{
    if (!machine.isFree()) return;
    if (m_request.isEmpty()) {
        ++m_started;
        const bool writes = m_writeEvery > 0 && m_started % m_writeEvery == 0;
        m_request = writes ? writeOf(WRITTEN + m_started / m_writeEvery % 3, m_started & 0xFFFF)
                           : m_polled[m_next++ % m_polled.size()];
    }
    machine.start(m_request, m_isRepeat, now);
    m_isRepeat = true;
}

void PollingHost::step(qint64 end)
{
    startNext();
    const ExchangeMachine::Step step = machine.advance(now);
    takeEnded();
    if (!step.send.isEmpty()) {
        ++figures.sent;
        figures.fences += step.isFence ? 1 : 0;
        figures.fencesThatWrite += step.isFence && isWrite(step.send) ? 1 : 0;
        if (sent.size() >= KEPT) sent.clear();
        sent.push_back(step.send);
        const qint64 ends = now + m_timing.frame(int(step.send.size()));
        m_peer.hear(step.send, ends, step.wakeAt - ends);
    }
    const qint64 wakeAt = std::min(step.wakeAt, end);
    const qint64 comes = m_peer.nextAt();
    if (comes >= 0 && comes <= wakeAt) {
        now = std::max(now, comes);
        machine.received(m_peer.takeNext(), now);
        takeEnded();
    } else {
        now = std::max(now, wakeAt);
    }
}

void PollingHost::takeEnded()
{
    for (const EndedExchange& ended : machine.takeEnded()) {
        if (!ended.isFence && ended.end != END_LATE) take(ended);
    }
}

void PollingHost::take(const EndedExchange& ended)
{
    const bool isGood = ended.end == END_ANSWERED || ended.end == END_REFUSED;
    if (isGood) judge(ended);
    if (!isGood && ++m_failures < m_attempts) return;
    figures.givenUp += isGood ? 0 : 1;
    m_failures = 0;
    m_request.clear();
    m_isRepeat = false;
    ++m_ended;
}

void PollingHost::judge(const EndedExchange& ended)
{
    figures.longestGap = std::max(figures.longestGap, now - m_lastAnswer);
    m_lastAnswer = now;
    const int station = byteOf(m_request, 0);
    const int reg = wordOf(m_request, REGISTER_AT);
    if (ended.end == END_REFUSED) {
        ++figures.refused;
        const bool mayBe = reg >= m_peer.habits.firstRefused || m_peer.habits.busy > 0;
        figures.wronglyRefused += mayBe ? 0 : 1;
        return;
    }
    ++m_answeredBy[station];
    if (isWrite(m_request)) {
        ++figures.confirmed;
        const bool isDone =
            m_peer.written(station, WRITE_REGISTER, reg) == wordOf(m_request, COUNT_AT);
        figures.falselyConfirmed += isDone ? 0 : 1;
        return;
    }
    ++figures.answered;
    const int count = wordOf(m_request, COUNT_AT);
    bool isRight = ended.reply.size() == 2 * count + 5 && ended.station == station &&
                   reg < m_peer.habits.firstRefused;
    for (int i = 0; isRight && i < count; ++i)
        isRight = wordOf(ended.reply, DATA_AT + 2 * i) == OrderlyPeer::valueOf(station, reg + i);
    figures.wrong += isRight ? 0 : 1;
}
