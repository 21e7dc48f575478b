#include "signals.h"

#include <algorithm>
#include <cmath>

namespace {

const double FULL_TURN = 6.283185307179586;

enum { DEMO_TOGGLES = 4, WALK_STEPS = 50, WALK_DIRECTIONS = 3 };

std::uint16_t sineValue(const Signal& signal, std::int64_t within)
{
    const double turn = FULL_TURN * double(within) / double(signal.periodMs);
    return static_cast<std::uint16_t>(std::lround(signal.amplitude * std::sin(turn)) & 0xFFFF);
}

std::uint16_t valueAt(const Signal& signal, std::int64_t ms)
{
    const std::int64_t within = ms % signal.periodMs;
    switch (signal.kind) {
    case SIGNAL_RAMP:
        return static_cast<std::uint16_t>(within * (signal.amplitude + 1) / signal.periodMs);
    case SIGNAL_SINE:
        return sineValue(signal, within);
    case SIGNAL_TOGGLE:
        return static_cast<std::uint16_t>(within * 2 < signal.periodMs ? 0 : signal.amplitude);
    default:
        return static_cast<std::uint16_t>(ms / signal.periodMs % (signal.amplitude + 1));
    }
}

Signal signalAt(int station, Area area, int number, SignalKind kind, int periodMs, int amplitude)
{
    Signal made;
    made.place = {station, area, number};
    made.kind = kind;
    made.periodMs = periodMs;
    made.amplitude = amplitude;
    return made;
}

} // namespace

std::vector<Signal> demoSignals(const std::vector<int>& stations)
{
    std::vector<Signal> all;
    for (const int station : stations) {
        all.push_back(signalAt(station, AREA_IW, 0, SIGNAL_RAMP, 10000, 1000));
        all.push_back(signalAt(station, AREA_IW, 1, SIGNAL_SINE, 20000, 1000));
        all.push_back(signalAt(station, AREA_IW, 2, SIGNAL_COUNTER, 500, 65535));
        all.push_back(signalAt(station, AREA_IW, 3, SIGNAL_WALK, 200, 1000));
        // IX 64 is bit 0 of IW 4: clear of the words above
        for (int k = 0; k < DEMO_TOGGLES; ++k)
            all.push_back(signalAt(station, AREA_IX, 64 + k, SIGNAL_TOGGLE, 1000 << k, 1));
        all.push_back(signalAt(station, AREA_MW, 3000, SIGNAL_COUNTER, 1000, 65535));
        all.push_back(signalAt(station, AREA_MX, 3160, SIGNAL_TOGGLE, 2000, 1));
    }
    return all;
}

SignalSet::SignalSet(const std::vector<Signal>& moving, unsigned seed)
{
    std::mt19937 random(seed);
    for (const Signal& signal : moving)
        m_moving.push_back({signal, std::int64_t(random()) % signal.periodMs,
                            std::mt19937(seed + unsigned(m_moving.size())), signal.amplitude / 2, 0,
                            std::nullopt});
}

/// A step goes down, goes up or stays, each as likely, by 1/50 of the amplitude, at least by 1.
std::uint16_t SignalSet::walkedTo(Moving& moving, std::int64_t ms)
{
    const int amplitude = moving.signal.amplitude;
    const int step = std::max(amplitude / int(WALK_STEPS), 1);
    for (; moving.stepsWalked < ms / moving.signal.periodMs; ++moving.stepsWalked) {
        const int direction = int(moving.random() % WALK_DIRECTIONS) - 1;
        moving.walked = std::clamp(moving.walked + direction * step, 0, amplitude);
    }
    return static_cast<std::uint16_t>(moving.walked);
}

std::vector<PlaceValue> SignalSet::changes(std::int64_t timeMs)
{
    std::vector<PlaceValue> changed;
    for (Moving& moving : m_moving) {
        const std::int64_t ms = timeMs + moving.phaseMs;
        const std::uint16_t value =
            moving.signal.kind == SIGNAL_WALK ? walkedTo(moving, ms) : valueAt(moving.signal, ms);
        if (moving.last == value) continue;
        moving.last = value;
        changed.push_back({moving.signal.place, value});
    }
    return changed;
}
