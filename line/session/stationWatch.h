#ifndef STATION_WATCH_H
#define STATION_WATCH_H

#include <QtGlobal>

#include <map>
#include <optional>
#include <vector>

/// Which stations answer, and when to ask the others. Times are microseconds.
///
///             asked once, shortly         asked again
///   expect() ---> UNKNOWN ----> OVERDUE ----------------> SILENT <--+
///                    |             |       no answer        |       | asked at growing intervals
///                    +-------------+---> ANSWERS <----------+-------+
///                         an answer         |                       |
///                                           +--- given up ----------+
///
/// Each time-out of a silent station is taken from the others. So one that was never heard is asked
/// shortly at first, as its late answer harms nothing; and one that is silent at intervals that are
/// multiples of the time-out, which keeps the loss a small share of the time whatever it is. Behind
/// each that fails the others have a time-out for themselves, however many are due.
class StationWatch
{
public:
    struct Probe
    {
        int station;
        qint64 wait; ///< for an answer; 0: as long as for any
    };

    /// @param timeOut  what asking a silent station costs
    explicit StationWatch(qint64 timeOut);

    /// The station is to be polled, and is due to be asked whether it is there.
    void expect(int station, qint64 now);

    /// It answered, be it with an exception.
    /// @return true when it had not answered before, or no more
    bool answered(int station);

    /// A request or probe was given up.
    /// @param heard  something came, though no answer: one such give-up may be noise
    /// @return true when the station counts as silent from now on
    bool gaveUp(int station, bool heard, qint64 now);

    bool isSilent(int station) const;

    /// It answers, as far as is known: a request to it is worth sending.
    bool isPolled(int station) const;

    /// No station answers of all that were ever expected or asked.
    bool areAllSilent() const;

    /// The station that is due to be asked; it is not due again before gaveUp() of it.
    std::optional<Probe> takeDueProbe(qint64 now);

    /// When the next probe is due, if one is.
    std::optional<qint64> nextProbe() const;

    /// The link has come back: nothing is known of any station, and all are due.
    void startAnew(qint64 now);

private:
    enum Answering { ANSWERS, UNKNOWN, OVERDUE, SILENT };

    struct State
    {
        Answering answering = ANSWERS;
        int giveUps = 0; ///< in a row
        bool probing = false;
        qint64 pause = 0;
        qint64 probeAt = 0;
    };

    void pauseFor(State& state, qint64 pause, qint64 now) const;
    qint64 dueAt(const State& state) const;
    static bool goesAhead(const State& a, const State& b);

    const qint64 m_timeOut;
    qint64 m_othersUntil = 0; ///< no probe with the whole time-out before
    std::map<int, State> m_stations;
};

#endif
