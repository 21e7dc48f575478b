#include "session/stationWatch.h"

#include <algorithm>
#include <tuple>

namespace {

// Pauses in time-outs. The first pause is short, because a burst of noise may have been the only
// reason.
enum { OVERDUE_PAUSE = 1, FIRST_PAUSE = 4, SECOND_PAUSE = 20, LONGEST_PAUSE = 120 };

enum {
    NOISY_GIVE_UPS = 3,
    FIRST_PROBES_SHARE = 8 ///< a station's first probe waits for 1/8 of the time-out
};

} // namespace

StationWatch::StationWatch(qint64 timeOut, std::optional<qint64> longestPause)
    : m_timeOut(timeOut),
      m_longestPause(std::clamp<qint64>(longestPause.value_or(LONGEST_PAUSE * timeOut),
                                        FIRST_PAUSE * timeOut, LONGEST_PAUSE * timeOut))
{
}

void StationWatch::expect(int station, qint64 now)
{
    State& state = m_stations[station];
    state = State();
    state.answering = UNKNOWN;
    state.probeAt = now;
}

bool StationWatch::answered(int station)
{
    State& state = m_stations[station];
    const bool isNew = state.answering != ANSWERS;
    state = State();
    return isNew;
}

void StationWatch::pauseFor(State& state, qint64 pause, qint64 now) const
{
    state.pause = pause;
    state.probing = state.hurried = false;
    state.probeAt = now + pause;
}

qint64 StationWatch::dueAt(const State& state) const
{
    const bool isAtOnce = state.answering == UNKNOWN || state.hurried;
    return isAtOnce ? state.probeAt : std::max(state.probeAt, m_othersUntil);
}

/// Short probes go first. Among equals, the probe that has been due longest goes first.
bool StationWatch::goesAhead(const State& a, const State& b)
{
    return std::make_tuple(a.answering != UNKNOWN, a.probeAt) <
           std::make_tuple(b.answering != UNKNOWN, b.probeAt);
}

bool StationWatch::gaveUp(int station, bool heard, qint64 now)
{
    State& state = m_stations[station];
    ++state.giveUps;
    m_othersUntil = now + m_timeOut;
    switch (state.answering) {
    case UNKNOWN:
        state.answering = OVERDUE;
        pauseFor(state, OVERDUE_PAUSE * m_timeOut, now);
        return false;
    case SILENT:
        if (state.hurried) {
            pauseFor(state, state.pause, now);
            return false;
        }
        pauseFor(state,
                 std::min(std::max(2 * state.pause, SECOND_PAUSE * m_timeOut), m_longestPause),
                 now);
        return false;
    case ANSWERS:
        if (heard && state.giveUps < NOISY_GIVE_UPS) return false;
        break;
    default:
        break;
    }
    state.answering = SILENT;
    pauseFor(state, FIRST_PAUSE * m_timeOut, now);
    return true;
}

void StationWatch::hurry(int station, qint64 at)
{
    const auto found = m_stations.find(station);
    if (found == m_stations.end()) return;
    State& state = found->second;
    if (state.answering != SILENT || state.probing || dueAt(state) <= at) return;
    state.probeAt = at;
    state.hurried = true;
}

bool StationWatch::isSilent(int station) const
{
    const auto found = m_stations.find(station);
    return found != m_stations.end() && found->second.answering == SILENT;
}

bool StationWatch::isPolled(int station) const
{
    const auto found = m_stations.find(station);
    return found == m_stations.end() || found->second.answering == ANSWERS;
}

bool StationWatch::areAllSilent() const
{
    return !m_stations.empty() &&
           std::all_of(m_stations.begin(), m_stations.end(),
                       [](const auto& entry) { return entry.second.answering == SILENT; });
}

std::optional<StationWatch::Probe> StationWatch::takeDueProbe(qint64 now)
{
    auto next = m_stations.end();
    for (auto at = m_stations.begin(); at != m_stations.end(); ++at) {
        const State& state = at->second;
        if (state.answering == ANSWERS || state.probing || dueAt(state) > now) continue;
        if (next == m_stations.end() || goesAhead(state, next->second)) next = at;
    }
    if (next == m_stations.end()) return std::nullopt;
    auto& [station, state] = *next;
    state.probing = true;
    return Probe{station, state.answering == UNKNOWN ? m_timeOut / FIRST_PROBES_SHARE : 0};
}

std::optional<qint64> StationWatch::nextProbe() const
{
    std::optional<qint64> next;
    for (const auto& [station, state] : m_stations) {
        if (state.answering != ANSWERS && !state.probing)
            next = std::min(next.value_or(dueAt(state)), dueAt(state));
    }
    return next;
}

void StationWatch::startAnew(qint64 now)
{
    for (auto& [station, state] : m_stations) {
        state = State();
        state.answering = UNKNOWN;
        state.probeAt = now;
    }
}
