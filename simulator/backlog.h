#ifndef BACKLOG_H
#define BACKLOG_H

#include "faultedReply.h"
#include "stallSchedule.h"

#include <deque>
#include <set>

/// Whether anybody is left to read a reply.
enum Audience { AUDIENCE_HOST, AUDIENCE_NONE };

/// A request that is to be served, with all that chance decides about it: that is drawn when it
/// comes, so that a stall leaves the other faults where they are.
struct Exchange
{
    Bytes request;
    std::int64_t requestEnd = 0; ///< nanoseconds
    Fault fault = NO_FAULT;
    Draws draws;
    std::optional<std::int64_t> lateness;
    std::set<int> deaf; ///< the stations that do not execute it, if it is a broadcast
    Audience audience = AUDIENCE_HOST;
};

/// The requests that a stall holds back, in the order in which they came. Times are nanoseconds.
class Backlog
{
public:
    explicit Backlog(const StallSettings& settings);

    /// A good frame came, whomever it is for.
    void requestSeen(std::int64_t at)
    {
        m_schedule.requestSeen(at);
    }

    /// A request that is there at `at` has to wait: the station stalls, or others wait ahead of it.
    bool holds(int station, std::int64_t at) const;

    void add(const Exchange& exchange);

    /// When the first one is to be served; nothing when there is none.
    std::optional<std::int64_t> nextServiceAt() const;

    /// The first one, which is served at nextServiceAt(). There must be one.
    Exchange take();

    /// A reply that could start at `start` starts then, or when the stall that this is in ends.
    std::int64_t replyStart(int station, std::int64_t start) const;

    /// The host is gone: what it asked is executed all the same.
    void audienceLeft();

private:
    bool concerns(int station) const;

    StallSettings m_settings;
    StallSchedule m_schedule;
    std::deque<Exchange> m_held;
    std::int64_t m_busyUntil = 0;
};

#endif
