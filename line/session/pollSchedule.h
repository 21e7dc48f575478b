#ifndef POLL_SCHEDULE_H
#define POLL_SCHEDULE_H

#include "plan/readPlan.h"

#include <functional>
#include <optional>
#include <vector>

/// Says which block is to be read next, and when. It does no I/O. Times are microseconds of a clock
/// that never goes back. One thread calls it.
///
///     pace             |<----------- pace ----------->|<----------- pace ----------->|
///     fast blocks      A B C                          A B C                          A B C
///     every 10 s           |S                             |S                             |S
///     once                   |O
///
/// - A cycle reads every fast block once. It begins when the cycle before is over, and at the
///   earliest one pace after that cycle began.
/// - A block with an interval is due at fixed times: its first time plus whole intervals. A late
///   read does not shift the later times. Times that have passed meanwhile are left out.
/// - A block that is read once stays due until answered().
/// - Blocks with intervals and blocks that are read once do not wait for a cycle or its pace. They
///   take turns with the fast blocks, so neither kind holds up the other kind.
/// - Blocks of stations that are not polled wait. A station that comes back has all its blocks due
///   at once, and so has every station on a new connection.
///
/// A block is named by its index. replace() makes all earlier indices invalid.
class PollSchedule
{
public:
    using IsPolled = std::function<bool(int station)>;

    /// @param isPolled  whether the blocks of a station take part; asked at each call of due() and
    ///                  nextAt()
    explicit PollSchedule(IsPolled isPolled);

    /// All blocks are due.
    /// @param pace  shortest time from the start of a cycle to the next start; 0: none
    void set(std::vector<ReadBlock> blocks, qint64 pace);

    const ReadBlock& block(int index) const
    {
        return m_entries[size_t(index)].block;
    }

    /// The block to read now; empty: none is due.
    std::optional<int> due(qint64 now) const;

    /// The read of a block that due() named has started.
    void began(int index, qint64 now);

    /// The station has answered the read, by values or by a refusal.
    void answered(int index);

    /// Puts parts in the place of a block. They are due at once, and then at the block's times.
    void replace(int index, const std::vector<ReadBlock>& parts);

    /// The time of the next due block, which may be in the past. Empty: nothing is going to be due.
    std::optional<qint64> nextAt() const;

    /// All blocks of the station are due.
    void stationCameBack(int station);

    /// A new connection: all blocks are due.
    void startAnew();

private:
    struct Entry
    {
        ReadBlock block;
        bool isDone = false;          ///< fast: had its turn in this cycle; once: was answered;
                                      ///< interval: waits for nextAt
        std::optional<qint64> nextAt; ///< of an interval; empty: it has no fixed times yet
    };

    static bool isFast(const Entry& entry);
    static std::optional<qint64> dueTime(const Entry& entry);
    static void makeDue(Entry& entry);
    std::optional<int> dueFast(qint64 now) const;
    std::optional<int> dueSlow(qint64 now) const;
    std::optional<int> firstFast(bool isInThisCycle) const;
    void beganFast(Entry& begun, qint64 now);

    const IsPolled m_isPolled;
    std::vector<Entry> m_entries; ///< in the order of a cycle
    qint64 m_pace = 0;
    qint64 m_nextCycleAt = 0;  ///< the next cycle does not begin before
    bool m_isCycleOver = true; ///< every polled fast block has begun
    bool m_wasSlow = false;    ///< the last block was no fast block
};

#endif
