#include "session/pollSchedule.h"

#include "plan/neighbours.h"
#include "plan/ratedReads.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

const qint64 LONG_AGO = std::numeric_limits<qint64>::min() / 2;

qint64 intervalOf(const ReadBlock& block)
{
    return block.rate.intervalMs * MILLISECOND;
}

} // namespace

PollSchedule::PollSchedule(IsPolled isPolled) : m_isPolled(std::move(isPolled)) {}

void PollSchedule::set(std::vector<ReadBlock> blocks, qint64 pace)
{
    std::stable_sort(blocks.begin(), blocks.end(), isReadBefore);
    m_entries.clear();
    for (ReadBlock& block : blocks) {
        m_entries.emplace_back();
        m_entries.back().block = std::move(block);
    }
    m_pace = pace;
    startAnew();
}

bool PollSchedule::isFast(const Entry& entry)
{
    return isReadInEveryCycle(entry.block);
}

/// The time at which a block without cycles is due; empty: it was read once.
std::optional<qint64> PollSchedule::dueTime(const Entry& entry)
{
    if (!entry.isDone) return LONG_AGO;
    return entry.nextAt;
}

void PollSchedule::makeDue(Entry& entry)
{
    entry.isDone = false;
    entry.nextAt.reset();
}

std::optional<int> PollSchedule::firstFast(bool isInThisCycle) const
{
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        if (!isFast(entry) || (isInThisCycle && entry.isDone)) continue;
        if (m_isPolled(entry.block.station)) return int(i);
    }
    return std::nullopt;
}

/// The next block of the cycle under way, else the first block of the next cycle.
std::optional<int> PollSchedule::dueFast(qint64 now) const
{
    const std::optional<int> next = firstFast(true);
    return next || now < m_nextCycleAt ? next : firstFast(false);
}

/// The block that has been due longest.
std::optional<int> PollSchedule::dueSlow(qint64 now) const
{
    std::optional<int> longest;
    qint64 longestAt = now + 1;
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        if (isFast(entry)) continue;
        const std::optional<qint64> at = dueTime(entry);
        if (!at || *at >= longestAt || !m_isPolled(entry.block.station)) continue;
        longest = int(i);
        longestAt = *at;
    }
    return longest;
}

std::optional<int> PollSchedule::due(qint64 now) const
{
    const std::optional<int> fast = dueFast(now);
    if (fast && m_wasSlow) return fast;
    const std::optional<int> slow = dueSlow(now);
    return slow ? slow : fast;
}

void PollSchedule::began(int index, qint64 now)
{
    Entry& begun = m_entries[size_t(index)];
    m_wasSlow = !isFast(begun);
    if (isFast(begun)) return beganFast(begun, now);
    if (begun.block.rate.kind != ReadRate::INTERVAL) return;
    const qint64 interval = intervalOf(begun.block);
    begun.isDone = true;
    if (!begun.nextAt)
        begun.nextAt = now + interval;
    else if (*begun.nextAt <= now)
        *begun.nextAt += ((now - *begun.nextAt) / interval + 1) * interval;
}

/// A block that became due after the cycle was over, and before the next cycle, prolongs the cycle.
void PollSchedule::beganFast(Entry& begun, qint64 now)
{
    if ((m_isCycleOver && now >= m_nextCycleAt) || begun.isDone) {
        for (Entry& entry : m_entries)
            entry.isDone = entry.isDone && !isFast(entry);
        m_nextCycleAt = now + m_pace;
    }
    begun.isDone = true;
    m_isCycleOver = !firstFast(true);
}

void PollSchedule::answered(int index)
{
    Entry& entry = m_entries[size_t(index)];
    if (entry.block.rate.kind == ReadRate::ONCE) entry.isDone = true;
}

void PollSchedule::replace(int index, const std::vector<ReadBlock>& parts)
{
    Entry entry = m_entries[size_t(index)];
    entry.isDone = false;
    auto at = m_entries.erase(m_entries.begin() + index);
    for (const ReadBlock& part : parts) {
        entry.block = part;
        at = m_entries.insert(at, entry) + 1;
    }
}

std::optional<qint64> PollSchedule::nextAt() const
{
    std::optional<qint64> next;
    const auto take = [&next](std::optional<qint64> at) {
        if (at && (!next || *at < *next)) next = at;
    };
    if (firstFast(true))
        take(LONG_AGO);
    else if (firstFast(false))
        take(m_nextCycleAt);
    for (const Entry& entry : m_entries) {
        if (!isFast(entry) && m_isPolled(entry.block.station)) take(dueTime(entry));
    }
    return next;
}

void PollSchedule::stationCameBack(int station)
{
    for (Entry& entry : m_entries) {
        if (entry.block.station == station) makeDue(entry);
    }
}

void PollSchedule::startAnew()
{
    for (Entry& entry : m_entries)
        makeDue(entry);
    m_nextCycleAt = LONG_AGO;
    m_isCycleOver = true;
    m_wasSlow = false;
}
