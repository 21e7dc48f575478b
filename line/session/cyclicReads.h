#ifndef CYCLIC_READS_H
#define CYCLIC_READS_H

#include "session/pollSchedule.h"
#include "session/startedDriver.h"

/// Lets the driver poll one block at a time: the block that the schedule names. The driver would
/// poll all blocks of its list without a pause, and after ten writes even a block that is not due.
///
///     time            ---------------------------------------------->
///     handIn()        A        B        none      none     A
///     driver's list   A        B                           A
///     begun()           A        B                           A
///     requests          [A  ]    [B  ]     [write]           [A  ]
///
/// While nothing is due, the driver's list is empty. The list changes only between two requests, so
/// the frame of a polled block is that of block().
/// Times are microseconds. One thread calls it.
class CyclicReads
{
public:
    CyclicReads(StartedDriver& driver, PollSchedule::IsPolled isPolled)
        : m_driver(driver), m_schedule(std::move(isPolled))
    {
    }

    /// @param pace  shortest time from the start of a cycle to the next start; 0: none
    void start(std::vector<ReadBlock> blocks, qint64 pace);

    /// Hands the block that is due to the driver. Only between two requests.
    void handIn(qint64 now);

    /// The driver's request for the block has begun.
    void begun(qint64 now);

    /// The block that was handed in; null: none.
    const ReadBlock* block() const
    {
        return m_handedIn ? &m_schedule.block(*m_handedIn) : nullptr;
    }

    /// The station has answered the read of the block, by values or by a refusal that stands.
    void answered();

    /// The PLC has refused the block: its parts are read instead, at once.
    void split(const std::vector<ReadBlock>& parts);

    /// The time of the next due block; empty: a block is handed in, or nothing is going to be due.
    std::optional<qint64> nextAt() const;

    /// All blocks of the station are due.
    void stationCameBack(int station)
    {
        m_schedule.stationCameBack(station);
    }

    /// The driver has given up the block that was handed in, and its list is empty.
    void givenUp();

    /// A new connection: all blocks are due.
    void startAnew()
    {
        m_schedule.startAnew();
    }

private:
    StartedDriver& m_driver;
    PollSchedule m_schedule;
    std::optional<int> m_handedIn; ///< index of the block in the driver's list
    bool m_isListCurrent = false;  ///< the driver's list has the block of m_handedIn, or none
};

#endif
