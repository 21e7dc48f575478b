#ifndef FAULT_SCHEDULE_H
#define FAULT_SCHEDULE_H

#include <array>
#include <cstdint>
#include <optional>
#include <random>

enum Fault {
    FAULT_DROP,          ///< executed, reply not sent
    FAULT_DROP_REQUEST,  ///< never seen
    FAULT_CORRUPT,       ///< one bit of the reply flipped
    FAULT_TRUNCATE,      ///< the reply's end is missing
    FAULT_DUPLICATE,     ///< the reply twice, each copy by itself
    FAULT_DELAY,         ///< the reply late
    FAULT_STRAY_BEFORE,  ///< 1 to 3 random bytes ahead of the reply
    FAULT_STRAY_AFTER,   ///< 1 to 3 random bytes behind it
    FAULT_WRONG_STATION, ///< the reply names another station, with the checksum that goes with it
    FAULT_EXCEPTION,     ///< refused, not executed
    FAULT_KINDS,
    NO_FAULT = FAULT_KINDS
};

using FaultRates = std::array<double, FAULT_KINDS>;

/// "drop", "drop-request", and so on.
const char* faultName(Fault fault);

/// Which fault each exchange has, at most one: the same for the same seed.
class FaultSchedule
{
public:
    /// @param rates      0 to 1 each, 1 at most together
    /// @param exchanges  faults come in the first so many exchanges only; 0: always
    FaultSchedule(const FaultRates& rates, unsigned seed, std::int64_t exchanges);

    Fault next();

    /// The exchanges that may have faults have all been.
    bool isOver() const
    {
        return m_exchanges > 0 && m_drawn >= m_exchanges;
    }

    /// @return true for a share of the exchanges, whatever fault they would have
    bool isSilent(double share);

    /// @return for a share of the exchanges, whatever fault they have, how late the reply is: 0 to
    ///         `longest`
    std::optional<std::int64_t> lateness(double share, std::int64_t longest);

private:
    FaultRates m_rates;
    std::mt19937 m_random;
    std::mt19937 m_silences; // these two apart, so that they leave the other faults where they are
    std::mt19937 m_latenesses;
    std::int64_t m_exchanges;
    std::int64_t m_drawn = 0;
};

#endif
