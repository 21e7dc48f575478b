#ifndef SIGNALS_H
#define SIGNALS_H

#include "place.h"

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

enum SignalKind {
    SIGNAL_RAMP,    ///< from 0 to the amplitude within a period, then from 0 again
    SIGNAL_SINE,    ///< from minus to plus amplitude, in two's complement
    SIGNAL_TOGGLE,  ///< 0 for half a period, the amplitude for the other half: a square wave
    SIGNAL_COUNTER, ///< one up each period, from 0 again above the amplitude
    SIGNAL_WALK,    ///< from half the amplitude, a random step each period, 0 to the amplitude
    SIGNAL_KINDS
};

struct Signal
{
    Place place;
    SignalKind kind = SIGNAL_RAMP;
    std::int64_t periodMs = 1000; ///< 1 to 86,400,000
    int amplitude = 1;            ///< 1 to 65535, of a sine 32767
};

/// A signal from "STATION:AREA:NUMBER:KIND[:PERIOD_MS[:AMPLITUDE]]".
/// @return what is wrong with the text; empty when it is right and `signal` is set
std::string parseSignal(const std::string& text, Signal& signal);

/// Signals of every kind for each station.
std::vector<Signal> demoSignals(const std::vector<int>& stations);

/// Works out signal values for the times that it is given.
class SignalSet
{
public:
    /// @param seed  decides the phase at which each signal starts, and the steps of random walks
    SignalSet(const std::vector<Signal>& moving, unsigned seed);

    /// The values that changed since the last call. An unchanged value is not repeated, so that a
    /// host's write to its place lasts until the signal changes.
    /// @param timeMs  never goes back
    std::vector<PlaceValue> changes(std::int64_t timeMs);

private:
    struct Moving
    {
        Signal signal;
        std::int64_t phaseMs;
        std::mt19937 random;      ///< of a random walk
        int walked;               ///< value of a random walk
        std::int64_t stepsWalked; ///< since the start
        std::optional<std::uint16_t> last;
    };

    static std::uint16_t walkedTo(Moving& moving, std::int64_t ms);

    std::vector<Moving> m_moving;
};

#endif
