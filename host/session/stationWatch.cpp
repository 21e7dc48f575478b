#include "session/stationWatch.h"

#include <algorithm>

namespace {

// In time-outs: the first probe comes soon, as a burst of noise may be all that happened.
enum { FIRST_PAUSE = 4, SECOND_PAUSE = 20, LONGEST_PAUSE = 120, NOISY_GIVE_UPS = 3 };

} // namespace

StationWatch::StationWatch(qint64 timeOut) : m_timeOut(timeOut) {}

bool StationWatch::answered(int station)
{
    State& state = m_stations[station];
    const bool wasSilent = state.silent;
    state = State();
    return wasSilent;
}

bool StationWatch::gaveUp(int station, bool heard, qint64 now)
{
    State& state = m_stations[station];
    ++state.giveUps;
    if (state.silent) {
        state.pause = std::min(std::max(2 * state.pause, SECOND_PAUSE * m_timeOut),
                               LONGEST_PAUSE * m_timeOut);
    } else {
        if (heard && state.giveUps < NOISY_GIVE_UPS) return false;
        state.pause = FIRST_PAUSE * m_timeOut;
    }
    const bool newlySilent = !state.silent;
    state.silent = true;
    state.probing = false;
    state.probeAt = now + state.pause;
    return newlySilent;
}

void StationWatch::putOff(int station, qint64 until)
{
    State& state = m_stations[station];
    state.probeAt = std::max(state.probeAt, until);
}

bool StationWatch::isSilent(int station) const
{
    const auto found = m_stations.find(station);
    return found != m_stations.end() && found->second.silent;
}

std::optional<int> StationWatch::takeDueProbe(qint64 now)
{
    for (auto& [station, state] : m_stations) {
        if (!state.silent || state.probing || state.probeAt > now) continue;
        state.probing = true;
        return station;
    }
    return std::nullopt;
}

std::optional<qint64> StationWatch::nextProbe() const
{
    std::optional<qint64> next;
    for (const auto& [station, state] : m_stations) {
        if (state.silent && !state.probing)
            next = std::min(next.value_or(state.probeAt), state.probeAt);
    }
    return next;
}

void StationWatch::probeAllAt(qint64 now)
{
    for (auto& [station, state] : m_stations)
        state.probeAt = now; // a probe that is under way survives the loss of the link
}
