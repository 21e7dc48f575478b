#ifndef REPLY_SLOTS_H
#define REPLY_SLOTS_H

#include <cstdint>
#include <map>
#include <vector>

/// When replies start on the line, which carries one at a time. A station's replies keep their
/// order; another station's may go ahead of one that is late. Times are nanoseconds.
class ReplySlots
{
public:
    /// The first moment from `ready` on at which the station may reply, if the line is free.
    std::int64_t earliest(int station, std::int64_t ready) const;

    /// Takes the line for the station's next reply.
    /// @return its start: earliest(), or as soon after it as the line is free for so long
    std::int64_t take(int station, std::int64_t ready, std::int64_t duration);

    /// Replies that are not placed yet start no sooner, of any station.
    void holdEveryone(std::int64_t until);

    /// Nothing is placed ahead of `now` any more.
    void timeIs(std::int64_t now);

    /// Takes back all that was placed.
    void clear();

private:
    struct Slot
    {
        std::int64_t start;
        std::int64_t end;
    };
    std::vector<Slot> m_taken; // in order, apart
    std::map<int, std::int64_t> m_stationEnds;
    std::int64_t m_everyoneAfter = 0;
};

#endif
