#ifndef STATION_SCAN_H
#define STATION_SCAN_H

#include "exchange/exchangeMachine.h"

#include <map>
#include <vector>

/// Finds the stations that answer on a link, without any I/O. It only sends fences, which are
/// reads; nothing is ever written. Every answer shows its station, also an exception reply, and
/// also an answer that comes while the next station is asked. Only a gateway's exceptions 10 and 11
/// do not: they say that the gateway does not reach the station.
///
///     round 1: every station once        round 2: the stations that were not found
///   ------------------------------------ ------------------------------------------ ... isOver()
///
/// Times are microseconds of a clock that never goes back. One thread makes all calls.
class StationScan
{
public:
    struct Settings
    {
        std::vector<int> stations;          ///< 1 to 247, in the order of asking
        int attempts = 1;                   ///< each silent station is asked so often, 1 or more
        ExchangeMachine::Settings exchange; ///< `answer` is the wait for each station
    };

    /// A station that answers.
    struct Found
    {
        int station;
        qint64 replyTime; ///< from the end of the request to the end of its answer; -1: the answer
                          ///< came late, after the wait for it
    };

    StationScan(const LineTiming& timing, const Settings& settings);

    /// Does the work that is due at `now`. Call it at wakeAt and after received(), until isOver().
    ExchangeMachine::Step advance(qint64 now);

    void received(const QByteArray& bytes, qint64 now);

    /// All stations were asked.
    bool isOver() const
    {
        return m_round >= m_settings.attempts;
    }

    /// The stations found since the last call, in the order of their answers.
    std::vector<Found> takeFound();

    /// The stations from which bytes came but no usable answer: noise, other line settings, or two
    /// stations of one number. Ascending. Complete when the scan is over.
    std::vector<int> unclear() const;

    /// Number of questions so far, and at most.
    int asked() const
    {
        return m_asked;
    }
    int mostAsked() const
    {
        return int(m_settings.stations.size()) * m_settings.attempts;
    }

    /// The longest time of a scan in which no station answers, in microseconds.
    static qint64 longestTime(const LineTiming& timing, const Settings& settings);

private:
    enum Sign { NO_SIGN, UNCLEAR, FOUND };

    void askNext(qint64 now);
    void takeEnded(qint64 now);
    void take(const EndedExchange& ended, qint64 now);

    const LineTiming m_timing;
    const Settings m_settings;
    ExchangeMachine m_machine;
    std::map<int, Sign> m_signs; ///< by station
    std::vector<Found> m_found;  ///< for takeFound()
    int m_round = 0;
    size_t m_next = 0;         ///< index of the next station of the round
    int m_asked = 0;           ///< number of questions
    int m_askedStation = 0;    ///< of the last question
    qint64 m_requestEndAt = 0; ///< time at which the last byte of the last question has left
};

#endif
