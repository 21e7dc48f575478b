#ifndef STALL_SCHEDULE_H
#define STALL_SCHEDULE_H

#include <cstdint>
#include <optional>

struct StallSettings
{
    std::int64_t lengthNs = 0;  ///< 0: there is none
    std::int64_t everyNs = 0;   ///< from one's start to the next one's; 0: there is only one
    std::optional<int> station; ///< the only one that stalls; none: all of them
    std::int64_t serviceNs = 0; ///< from one held answer's start to the next one's
};

/// When the PLC stands still. Its clock starts with the first request, so that a host which starts
/// late finds the same. Times are nanoseconds.
class StallSchedule
{
public:
    explicit StallSchedule(const StallSettings& settings);

    /// A good frame came, whomever it is for. Only the first one counts.
    void requestSeen(std::int64_t at);

    /// The end of the stall that `at` lies in; else `at`.
    std::int64_t goesOnAt(std::int64_t at) const;

private:
    std::int64_t m_length;
    std::int64_t m_every;
    std::optional<std::int64_t> m_firstRequest;
};

#endif
