#ifndef REPLY_SLOTS_H
#define REPLY_SLOTS_H

#include <cstdint>
#include <map>
#include <vector>

/// Decides when replies start on the line, which carries one reply at a time. Replies of one
/// station keep their order; a reply of another station may overtake a late reply. Times are
/// nanoseconds.
class ReplySlots
{
public:
    /// The earliest start, from `ready` on, of the station's next reply on a free line.
    std::int64_t earliest(int station, std::int64_t ready) const;

    /// Reserves the line for the station's next reply.
    /// @return its start: the first moment from earliest() on at which the line is free for
    ///         `duration`
    std::int64_t take(int station, std::int64_t ready, std::int64_t duration);

    /// Later reservations, of any station, start at `until` at the earliest.
    void holdEveryone(std::int64_t until);

    /// Forgets reservations that end by `now`. The caller reserves nothing before `now` any more.
    void timeIs(std::int64_t now);

    /// Forgets all reservations.
    void clear();

private:
    struct Slot
    {
        std::int64_t start;
        std::int64_t end;
    };
    std::vector<Slot> m_taken; // in order of time, without overlap
    std::map<int, std::int64_t> m_stationEnds;
    std::int64_t m_everyoneAfter = 0;
};

#endif
