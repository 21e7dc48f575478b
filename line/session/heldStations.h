#ifndef HELD_STATIONS_H
#define HELD_STATIONS_H

#include <QtGlobal>

#include <map>
#include <optional>
#include <vector>

/// The silent stations whose writes wait for them. A station is held from the moment at which it
/// fell silent until it answers, at most for the duration of the hold. Times are microseconds.
///
///                    silent()             answered()
///     writes are sent ------> writes wait ----------> writes are sent
///                                  |
///                                  +----------------> writes fail unsent, also later writes,
///                                   hold over          until the station answers
///
/// The hold is counted from the silence, not from the write. While writes wait, the station is
/// probed more often than other silent stations. So one silence costs the other stations a bounded
/// time, however many writes come.
class HeldStations
{
public:
    /// @param hold  0: no station is held
    explicit HeldStations(qint64 hold) : m_hold(hold) {}

    void silent(int station, qint64 now)
    {
        if (m_hold > 0) m_endsAt[station] = now + m_hold;
    }

    void answered(int station)
    {
        m_endsAt.erase(station);
    }

    /// The link was opened anew: nothing is known of the stations.
    void clear()
    {
        m_endsAt.clear();
    }

    bool isHeld(int station) const
    {
        return m_endsAt.count(station) != 0;
    }

    std::vector<int> stations() const;

    /// Ends the holds that are over. @return their stations
    std::vector<int> takeOver(qint64 now);

    /// The end of the next hold; empty: no station is held.
    std::optional<qint64> nextEnd() const;

private:
    const qint64 m_hold;
    std::map<int, qint64> m_endsAt; ///< by station
};

#endif
