#ifndef STALL_SCHEDULE_H
#define STALL_SCHEDULE_H

#include <cstdint>
#include <optional>

struct StallSettings
{
    std::int64_t lengthNs = 0;  ///< 0: there is none
    std::int64_t everyNs = 0;   ///< from start to start; 0: a single stall
    std::optional<int> station; ///< the only station that stalls; none: all stations
    std::int64_t serviceNs = 0; ///< from the start of one held reply to the start of the next
};

/// When the PLC stands still. Its clock starts with the first request, so that stalls do not depend
/// on when the host starts. Times are nanoseconds.
class StallSchedule
{
public:
    explicit StallSchedule(const StallSettings& settings);

    /// A request with a good checksum came, for any station. Only the first request counts.
    void requestSeen(std::int64_t at);

    /// Orders a stall from `at` on, besides the periodic ones. It takes the place of an ordered
    /// stall that is not over; a length of 0 ends it.
    void stall(std::int64_t at, std::int64_t length);

    /// The end of the stall that contains `at`; `at` itself outside a stall.
    std::int64_t goesOnAt(std::int64_t at) const;

private:
    std::int64_t scheduledEnd(std::int64_t at) const;

    std::int64_t m_length;
    std::int64_t m_every;
    std::optional<std::int64_t> m_firstRequest;
    std::int64_t m_orderedFrom = 0;
    std::int64_t m_orderedUntil = 0; // as m_orderedFrom: none is ordered
};

#endif
