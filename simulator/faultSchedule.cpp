#include "faultSchedule.h"

namespace {

const double RANDOM_VALUES = 4294967296.0; // of std::mt19937

const unsigned LATENESS_SEED = 0x55555555; // unlike the seeds of the other generators

const char* const NAMES[FAULT_KINDS] = {
    "drop",  "drop-request", "corrupt",     "truncate",      "duplicate",
    "delay", "stray-before", "stray-after", "wrong-station", "exception"};

/// 0 to 1. No standard distribution: its numbers differ between libraries, so a seed would too.
double drawnFrom(std::mt19937& random)
{
    return double(random()) / RANDOM_VALUES;
}

} // namespace

const char* faultName(Fault fault)
{
    return fault < FAULT_KINDS ? NAMES[fault] : "none";
}

FaultSchedule::FaultSchedule(const FaultRates& rates, unsigned seed, std::int64_t exchanges)
    : m_rates(rates),
      m_random(seed),
      m_silences(~seed),
      m_latenesses(seed ^ LATENESS_SEED),
      m_exchanges(exchanges)
{
}

bool FaultSchedule::isSilent(double share)
{
    return !isOver() && drawnFrom(m_silences) < share;
}

std::optional<std::int64_t> FaultSchedule::lateness(double share, std::int64_t longest)
{
    if (isOver() || drawnFrom(m_latenesses) >= share) return std::nullopt;
    return std::int64_t(drawnFrom(m_latenesses) * double(longest));
}

Fault FaultSchedule::next()
{
    if (isOver()) return NO_FAULT;
    ++m_drawn;
    const double drawn = drawnFrom(m_random);
    double reached = 0;
    for (int kind = 0; kind < FAULT_KINDS; ++kind) {
        reached += m_rates[std::size_t(kind)];
        if (drawn < reached) return static_cast<Fault>(kind);
    }
    return NO_FAULT;
}
