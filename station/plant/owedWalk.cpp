// The part of the ledger that finds the rows to be sent as history.
#include "plant/deliveryLedger.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

enum {
    MOST_LOOKED = 65536, ///< rows in a call
    MOST_READ = 2000,    ///< rows in a read
    LEAST_READ = 32,     ///< short ranges that lie close together are read at once
    MOST_ASKED = 1000,   ///< held tags in a call
    MOST_WALKS = 16      ///< in a call: each begins with what the one before has found
};

const qint64 END_OF_SEQUENCES = std::numeric_limits<qint64>::max();

} // namespace

/// One walk through the rows that are owed, and through the held ones of tags that are ready, in
/// the order of coming.
struct DeliveryLedger::Walk
{
    size_t most;
    const IsBorn& isBorn;
    RowRanges ready; ///< held ranges of the tags that are ready
    std::vector<LoggedRow> rows;
    int looked = 0;
    bool isOver = false; ///< a tag was found whose held rows go first
};

std::vector<LoggedRow> DeliveryLedger::owed(int most, const IsBorn& isBorn)
{
    if (!m_log || !m_isBorn || most <= 0) return {};
    settle();
    if (!isFileKnown()) return {};
    dropOldest();
    for (int walks = 0; walks < MOST_WALKS; ++walks) {
        m_pick = Pick();
        findReady(isBorn);
        Walk found{size_t(most), isBorn, {}, {}, 0, false};
        for (const HeldRows::Tag& tag : m_ready) {
            for (const HeldRows::Range& range : *m_cursor.held.rangesOf(tag))
                found.ready.add(range.first, range.last);
        }
        walk(found);
        if (!found.rows.empty()) return std::move(found.rows);
        finishHeld();
        if (!found.isOver) break;
    }
    return {};
}

void DeliveryLedger::owedSent()
{
    if (m_pick.rows.isEmpty()) return;
    for (const auto& [first, last] : m_pick.rows.ranges())
        m_cursor.owed.remove(first, last);
    m_historyTime = m_pick.time;
    finishHeld();
    m_flying.push_back(std::move(m_pick.rows));
    ++m_batches;
    m_pick = Pick();
}

/// What the walk saw of held rows: they were sent, or are gone.
void DeliveryLedger::finishHeld()
{
    for (const HeldRows::Tag& tag : m_ready)
        m_cursor.dropped += m_cursor.held.walked(tag, m_pick.walkedTo, m_pick.held[tag]);
}

/// Rows that the history dropped for its cap.
void DeliveryLedger::dropOldest()
{
    if (m_cursor.owed.isEmpty() && m_cursor.held.count() == 0) return;
    const qint64 oldest = m_log->oldestSequence();
    if (oldest == std::exchange(m_oldest, oldest)) return;
    const qint64 first = m_cursor.owed.from(0, oldest).first;
    if (first < oldest) drop(first, oldest - 1);
    if (m_cursor.held.count() > 0) m_cursor.dropped += m_cursor.held.dropBefore(oldest);
}

void DeliveryLedger::drop(qint64 first, qint64 last)
{
    const qint64 before = m_cursor.owed.count();
    m_cursor.owed.remove(first, last);
    m_cursor.dropped += before - m_cursor.owed.count();
}

bool DeliveryLedger::isReady(const HeldRows::Tag& tag, const IsBorn& isBorn) const
{
    Sample sample;
    sample.link = tag.first;
    sample.tag = tag.second;
    return m_cursor.held.rangesOf(tag) != nullptr && isBorn(sample);
}

/// Held tags are asked for in turn, so that many of them cost little in a call.
void DeliveryLedger::findReady(const IsBorn& isBorn)
{
    m_ready.insert(m_found.begin(), m_found.end());
    m_found.clear();
    for (auto tag = m_ready.begin(); tag != m_ready.end();)
        tag = isReady(*tag, isBorn) ? std::next(tag) : m_ready.erase(tag);
    const auto& held = m_cursor.held.all();
    for (size_t asked = 0; asked < std::min<size_t>(MOST_ASKED, held.size()); ++asked) {
        auto next = held.upper_bound(m_askedLast);
        if (next == held.end()) next = held.begin();
        m_askedLast = next->first;
        if (isReady(next->first, isBorn)) m_ready.insert(next->first);
    }
}

/// The other tags of the device are those of the link that are born, too.
void DeliveryLedger::findDevice(Walk& walk, const HeldRows::Tag& tag)
{
    walk.isOver = true;
    m_found.insert(tag);
    const auto& held = m_cursor.held.all();
    auto other = held.lower_bound(HeldRows::Tag(tag.first, QString()));
    for (; other != held.end() && other->first.first == tag.first; ++other) {
        if (isReady(other->first, walk.isBorn)) m_found.insert(other->first);
    }
}

void DeliveryLedger::walk(Walk& walk)
{
    qint64 from = 0;
    while (!walk.isOver && walk.rows.size() < walk.most && walk.looked < MOST_LOOKED) {
        const auto owed = m_cursor.owed.from(from, END_OF_SEQUENCES);
        const auto held = walk.ready.from(from, END_OF_SEQUENCES);
        const auto next = std::min(owed, held);
        if (next.first > m_cursor.top) return;
        const qint64 length = std::min<qint64>(next.second - next.first + 1, MOST_READ);
        const std::vector<LoggedRow> rows = m_log->rowsBehind(
            next.first - 1, m_cursor.top, int(std::max<qint64>(length, LEAST_READ)));
        const bool isRead = rows.empty() ? walkGap(next.first) : walkRows(walk, next.first, rows);
        if (!isRead) return;
        from = m_walkEnd + 1;
    }
}

/// No row came. Only a row behind the gap proves that those in it are gone, and that the file can
/// be read.
bool DeliveryLedger::walkGap(qint64 from)
{
    const std::vector<LoggedRow> next = m_log->rowsBehind(from - 1, END_OF_SEQUENCES, 1);
    if (next.empty() || next[0].sequence <= from) return false;
    m_walkEnd = std::min(next[0].sequence - 1, m_cursor.top);
    m_pick.walkedTo = m_walkEnd;
    drop(from, m_walkEnd);
    return true;
}

/// @return false: the walk cannot go on behind these rows
bool DeliveryLedger::walkRows(Walk& walk, qint64 from, const std::vector<LoggedRow>& rows)
{
    if (from != m_walkEnd + 1) m_cursor.held.jumped();
    qint64 next = from;
    for (const LoggedRow& row : rows) {
        if (row.sequence < next) return false;
        if (row.sequence > next) drop(next, row.sequence - 1);
        if (!take(walk, row)) return false;
        next = row.sequence + 1;
        m_walkEnd = m_pick.walkedTo = row.sequence;
        ++walk.looked;
        if (walk.rows.size() == walk.most) break;
    }
    return true;
}

/// @return false: held rows of its tag go first, in another walk
bool DeliveryLedger::take(Walk& walk, const LoggedRow& row)
{
    const HeldRows::Tag tag(row.sample.link, row.sample.tag);
    const bool isOwed = m_cursor.owed.has(row.sequence);
    const bool isBorn = isOwed && walk.isBorn(row.sample);
    if (isOwed && !isBorn) {
        m_cursor.owed.remove(row.sequence, row.sequence);
        m_cursor.held.hold(tag, row.sequence);
        return true;
    }
    const bool isTakenAlong = m_ready.count(tag) > 0;
    const bool isHeld = !isOwed && isTakenAlong && m_cursor.held.has(tag, row.sequence);
    if (isOwed && !isTakenAlong && m_cursor.held.isBefore(tag, row.sequence)) {
        findDevice(walk, tag);
        return false;
    }
    m_cursor.held.sent(tag);
    if (!isOwed && !isHeld) return true;
    if (isHeld) ++m_pick.held[tag];
    m_pick.rows.add(row.sequence, row.sequence);
    m_pick.time = row.sample.time;
    walk.rows.push_back(row);
    return true;
}
