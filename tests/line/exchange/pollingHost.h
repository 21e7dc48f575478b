#ifndef POLLING_HOST_H
#define POLLING_HOST_H

#include "exchange/exchangeMachine.h"
#include "orderlyPeer.h"

#include <vector>

/// What a run came to.
struct PollRun
{
    int answered = 0;
    int wrong = 0; ///< values of another register
    int refused = 0;
    int wronglyRefused = 0;   ///< refusals of what the peer never refuses
    int confirmed = 0;        ///< writes
    int falselyConfirmed = 0; ///< that the peer never executed
    int givenUp = 0;
    int sent = 0;
    int fences = 0;
    int fencesThatWrite = 0;
    qint64 longestGap = 0; ///< between two answers, in microseconds
};

/// Asks a machine for one request after the other, each up to three times as the driver does, and
/// looks at every answer. The clock jumps from event to event.
class PollingHost
{
public:
    enum { ATTEMPTS = 3 };

    PollingHost(OrderlyPeer& peer, const LineTiming& timing,
                const ExchangeMachine::Settings& settings);

    void poll(const std::vector<QByteArray>& requests)
    {
        m_polled = requests;
    }

    /// A request is asked so often before it is given up.
    void tryEach(int attempts)
    {
        m_attempts = attempts;
    }

    /// One of so many requests is a write of a value of its own to station 1.
    void writeEvery(int requests)
    {
        m_writeEvery = requests;
    }

    /// Until so many requests have ended.
    void run(int requests);

    /// Until so much time has passed.
    void runFor(qint64 duration);

    /// The link is lost and back after so long.
    void reconnect(qint64 downTime);

    /// Answers to a station's requests since the start.
    int answeredBy(int station) const
    {
        const auto found = m_answeredBy.find(station);
        return found == m_answeredBy.end() ? 0 : found->second;
    }

    qint64 now = 0;
    PollRun figures;
    ExchangeMachine machine;
    std::vector<QByteArray> sent; ///< the last thousand

private:
    void step(qint64 end);
    void startNext();
    void takeEnded();
    void take(const EndedExchange& ended);
    void judge(const EndedExchange& ended);

    OrderlyPeer& m_peer;
    const LineTiming m_timing;
    std::vector<QByteArray> m_polled;
    size_t m_next = 0;
    int m_writeEvery = 0;
    int m_started = 0;
    int m_attempts = ATTEMPTS;
    int m_failures = 0;
    QByteArray m_request; ///< under way; empty: none
    bool m_isRepeat = false;
    qint64 m_lastAnswer = 0;
    int m_ended = 0;
    std::map<int, int> m_answeredBy;
};

ExchangeMachine::Settings settingsOf(qint64 answer);

void print(const char* what, const PollRun& run);

/// Reads `count` registers with function 3, or 4 below 1000.
QByteArray readOf(int first, int count, int station = 1);
QByteArray writeOf(int reg, int value, int station = 1);

/// Twenty words 200 apart, as a plan with one tag a block reads them.
std::vector<QByteArray> wordsApart(int station = 1);

/// 2,000 words side by side, in 16 blocks of 125.
std::vector<QByteArray> fullBlocks();

#endif
