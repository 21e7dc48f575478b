#ifndef FAULT_SCHEDULE_H
#define FAULT_SCHEDULE_H

#include <array>
#include <cstdint>
#include <optional>
#include <random>

enum Fault {
    FAULT_DROP,          ///< executed, reply not sent
    FAULT_DROP_REQUEST,  ///< not executed, as if it had never come
    FAULT_CORRUPT,       ///< one bit of the reply flipped
    FAULT_TRUNCATE,      ///< the reply's end is missing
    FAULT_DUPLICATE,     ///< the reply twice, in two separate pieces
    FAULT_DELAY,         ///< the reply late
    FAULT_STRAY_BEFORE,  ///< 1 to 3 random bytes ahead of the reply
    FAULT_STRAY_AFTER,   ///< 1 to 3 random bytes behind the reply
    FAULT_WRONG_STATION, ///< the reply names another station; its checksum is good
    FAULT_EXCEPTION,     ///< refused, not executed
    FAULT_KINDS,
    NO_FAULT = FAULT_KINDS
};

using FaultRates = std::array<double, FAULT_KINDS>;

/// "drop", "drop-request", and so on.
const char* faultName(Fault fault);

/// Draws the fault of each exchange, at most one. The same seed draws the same faults.
class FaultSchedule
{
public:
    /// @param rates      0 to 1 each, at most 1 together
    /// @param exchanges  only the first so many exchanges have faults; 0: all of them
    FaultSchedule(const FaultRates& rates, unsigned seed, std::int64_t exchanges);

    Fault next();

    /// True when all exchanges that may have faults are over.
    bool isOver() const
    {
        return m_exchanges > 0 && m_drawn >= m_exchanges;
    }

    /// @return true for a share of the exchanges, independent of their other fault
    bool isSilent(double share);

    /// @return how late the reply is, 0 to `longest`, for a share of the exchanges, independent of
    ///         their other fault; nothing for the others
    std::optional<std::int64_t> lateness(double share, std::int64_t longest);

private:
    FaultRates m_rates;
    std::mt19937 m_random;
    // Two generators of their own: silences and latenesses must not shift the other faults.
    std::mt19937 m_silences;
    std::mt19937 m_latenesses;
    std::int64_t m_exchanges;
    std::int64_t m_drawn = 0;
};

#endif
