#ifndef BACKLOG_H
#define BACKLOG_H

#include "faultedReply.h"
#include "stallSchedule.h"

#include <deque>
#include <set>

/// Whether a host is left to read the reply.
enum Audience { AUDIENCE_HOST, AUDIENCE_NONE };

/// A request to serve, with every random decision about it. The decisions are drawn when the
/// request comes, so that a stall does not shift the other faults.
struct Exchange
{
    Bytes request;
    std::int64_t requestEnd = 0; ///< nanoseconds
    Fault fault = NO_FAULT;
    Draws draws;
    std::optional<std::int64_t> lateness;
    std::set<int> deaf; ///< stations that do not execute this broadcast
    Audience audience = AUDIENCE_HOST;
};

/// Requests that a stall holds back, in order of arrival. Times are nanoseconds.
class Backlog
{
public:
    explicit Backlog(const StallSettings& settings);

    /// A request with a good checksum came, for any station.
    void requestSeen(std::int64_t at)
    {
        m_schedule.requestSeen(at);
    }

    /// Stalls from `at` on, see StallSchedule::stall().
    void stall(std::int64_t at, std::int64_t length)
    {
        m_schedule.stall(at, length);
    }

    /// True when a request that is complete at `at` has to wait: its station stalls, or other
    /// requests wait ahead of it.
    bool holds(int station, std::int64_t at) const;

    void add(const Exchange& exchange);

    /// When the first held request is to be served; nothing when no request is held.
    std::optional<std::int64_t> nextServiceAt() const;

    /// Removes the first held request, which is served at nextServiceAt(). A request must be held.
    Exchange take();

    /// When a reply that is ready at `start` begins: at `start`, or at the end of a stall that
    /// contains `start`.
    std::int64_t replyStart(int station, std::int64_t start) const;

    /// The host is gone: its held requests are still executed, but not answered.
    void audienceLeft();

private:
    bool concerns(int station) const;

    StallSettings m_settings;
    StallSchedule m_schedule;
    std::deque<Exchange> m_held;
    std::int64_t m_busyUntil = 0;
};

#endif
