#ifndef STATION_WATCH_H
#define STATION_WATCH_H

#include <QtGlobal>

#include <map>
#include <optional>

/// Which stations are silent, and when to ask them again. Each time-out of a silent station is
/// taken from the others, so it is asked at growing intervals: they are multiples of the time-out,
/// which keeps the loss a small share of the time whatever the time-out is. Times are microseconds.
class StationWatch
{
public:
    /// @param timeOut  what asking a silent station costs
    explicit StationWatch(qint64 timeOut);

    /// It answered, be it with an exception.
    /// @return true when it had been silent
    bool answered(int station);

    /// A request was given up.
    /// @param heard  something came, though no answer: one such give-up may be noise
    /// @return true when the station counts as silent from now on
    bool gaveUp(int station, bool heard, qint64 now);

    /// A probe before then would be held back, and hold up the other stations.
    void putOff(int station, qint64 until);

    bool isSilent(int station) const;

    /// The silent station that is due to be asked; it is not due again before gaveUp() of it.
    std::optional<int> takeDueProbe(qint64 now);

    /// When the next probe is due, if one is.
    std::optional<qint64> nextProbe() const;

    /// All silent stations are due at once: the link has come back.
    void probeAllAt(qint64 now);

private:
    struct State
    {
        int giveUps = 0; ///< in a row
        bool silent = false;
        bool probing = false;
        qint64 pause = 0;
        qint64 probeAt = 0;
    };

    const qint64 m_timeOut;
    std::map<int, State> m_stations;
};

#endif
