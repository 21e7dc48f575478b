#ifndef POLLING_HOST_H
#define POLLING_HOST_H

#include "exchange/exchangeMachine.h"
#include "orderlyPeer.h"

#include <vector>

/// The counts of a run.
struct PollRun
{
    int answered = 0;
    int wrong = 0; ///< reads that brought the value of another register
    int refused = 0;
    int wronglyRefused = 0;   ///< refused requests that the peer never refuses
    int confirmed = 0;        ///< confirmed writes
    int falselyConfirmed = 0; ///< confirmed writes that the peer never executed
    int givenUp = 0;
    int sent = 0; ///< frames, fences included
    int fences = 0;
    int fencesThatWrite = 0;
    qint64 longestGap = 0; ///< longest time between two answers, in microseconds
};

/// A host that gives a machine one request after the other, judges every answer, and tries each
/// request up to three times, as the driver does. The clock jumps from event to event.
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

    /// Sets the number of attempts for each request.
    void tryEach(int attempts)
    {
        m_attempts = attempts;
    }

    /// Makes one of so many requests a write to station 1. Each write has another value.
    void writeEvery(int requests)
    {
        m_writeEvery = requests;
    }

    /// Runs until so many requests have ended.
    void run(int requests);

    /// Runs until so much time has passed.
    void runFor(qint64 duration);

    /// Loses the link, and opens it again after `downTime`.
    void reconnect(qint64 downTime);

    /// Number of answers to a station's requests since the start.
    int answeredBy(int station) const
    {
        const auto found = m_answeredBy.find(station);
        return found == m_answeredBy.end() ? 0 : found->second;
    }

    qint64 now = 0;
    PollRun figures;
    ExchangeMachine machine;
    std::vector<QByteArray> sent; ///< the last thousand frames that were sent

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
    QByteArray m_request; ///< the request under way; empty: none
    bool m_isRepeat = false;
    qint64 m_lastAnswer = 0;
    int m_ended = 0;
    std::map<int, int> m_answeredBy;
};

ExchangeMachine::Settings settingsOf(qint64 answer);

void print(const char* what, const PollRun& run);

/// A read of `count` registers: function 4 for registers below 1000, else function 3.
QByteArray readOf(int first, int count, int station = 1);
QByteArray writeOf(int reg, int value, int station = 1);

/// Reads of twenty words that lie 200 registers apart, as in a plan with one tag in each block.
std::vector<QByteArray> wordsApart(int station = 1);

/// Reads of 2,000 neighbouring words, in 16 blocks of 125 words.
std::vector<QByteArray> fullBlocks();

#endif
