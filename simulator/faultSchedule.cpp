#include "faultSchedule.h"

namespace {

const double RANDOM_VALUES = 4294967296.0; // of std::mt19937

const char* const NAMES[FAULT_KINDS] = {
    "drop",  "drop-request", "corrupt",     "truncate",      "duplicate",
    "delay", "stray-before", "stray-after", "wrong-station", "exception"};

} // namespace

const char* faultName(Fault fault)
{
    return fault < FAULT_KINDS ? NAMES[fault] : "none";
}

FaultSchedule::FaultSchedule(const FaultRates& rates, unsigned seed, std::int64_t exchanges)
    : m_rates(rates), m_random(seed), m_exchanges(exchanges)
{
}

Fault FaultSchedule::next()
{
    if (m_exchanges > 0 && m_drawn >= m_exchanges) return NO_FAULT;
    ++m_drawn;
    // Not a standard distribution: those differ from one library to the next.
    const double drawn = double(m_random()) / RANDOM_VALUES;
    double reached = 0;
    for (int kind = 0; kind < FAULT_KINDS; ++kind) {
        reached += m_rates[std::size_t(kind)];
        if (drawn < reached) return static_cast<Fault>(kind);
    }
    return NO_FAULT;
}
