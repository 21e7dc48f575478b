#ifndef STATION_WATCH_H
#define STATION_WATCH_H

#include <QtGlobal>

#include <map>
#include <optional>
#include <vector>

/// Knows which stations answer, and when to probe the other stations. Times are microseconds.
///
///             asked once, shortly         asked again
///   expect() ---> UNKNOWN ----> OVERDUE ----------------> SILENT <--+
///                    |             |       no answer        |       | asked at growing intervals
///                    +-------------+---> ANSWERS <----------+-------+
///                         an answer         |                       |
///                                           +--- given up ----------+
///
/// During the time-out of a silent station no other station can be polled. Three rules bound this
/// loss:
/// - The first probe of a station that was never heard has a short wait. A late answer to it does
///   no harm.
/// - A silent station is probed at multiples of the time-out, so the loss is a small share of the
///   time for every time-out.
/// - After each failed probe, no probe with the whole time-out is sent for one time-out. A hurried
///   probe does not wait for this: somebody waits for the station, for a bounded time.
class StationWatch
{
public:
    struct Probe
    {
        int station;
        qint64 wait; ///< longest wait for the answer; 0: the wait of every request
    };

    /// @param timeOut       wait for an answer, which a probe of a silent station costs
    /// @param longestPause  before a silent station is probed again, but never less than the first
    ///                      pause; empty: the pause grows up to 120 time-outs
    explicit StationWatch(qint64 timeOut, std::optional<qint64> longestPause = std::nullopt);

    /// The station is to be polled. Its first probe is due now.
    void expect(int station, qint64 now);

    /// The station answered. An exception reply counts as an answer.
    /// @return true when the station was not known to answer
    bool answered(int station);

    /// A request or probe of the station was given up.
    /// @param heard  bytes came but no usable answer; a single such failure may be noise
    /// @return true when the station became silent
    bool gaveUp(int station, bool heard, qint64 now);

    /// Brings the next probe of a silent station forward to `at`, for this once. A failure of this
    /// probe does not make the pause before the next probe longer.
    void hurry(int station, qint64 at);

    bool isSilent(int station) const;

    /// The station answers, or nothing is known of it: it takes part in polling.
    bool isPolled(int station) const;

    /// At least one station was expected or asked, and all these stations are silent.
    bool areAllSilent() const;

    /// The probe that is due. The station is not due again before its gaveUp().
    std::optional<Probe> takeDueProbe(qint64 now);

    /// The time of the next probe; empty: no probe is planned.
    std::optional<qint64> nextProbe() const;

    /// The link was opened again: all stations are UNKNOWN, and their first probes are due.
    void startAnew(qint64 now);

private:
    enum Answering { ANSWERS, UNKNOWN, OVERDUE, SILENT };

    struct State
    {
        Answering answering = ANSWERS;
        int giveUps = 0;      ///< since the last answer
        bool probing = false; ///< the probe was taken and has not ended
        bool hurried = false; ///< the next probe, or the probe under way, was brought forward
        qint64 pause = 0;
        qint64 probeAt = 0;
    };

    void pauseFor(State& state, qint64 pause, qint64 now) const;
    qint64 dueAt(const State& state) const;
    static bool goesAhead(const State& a, const State& b);

    const qint64 m_timeOut;
    const qint64 m_longestPause;
    qint64 m_othersUntil = 0; ///< no probe with the whole time-out starts before this time
    std::map<int, State> m_stations;
};

#endif
