#include "plant/deliveryLedger.h"

#include "machine/errorLines.h"

#include <algorithm>
#include <utility>

namespace {

/// The sequence of a row that this run put into the file.
qint64 sequenceOf(const LogPosition& position, qint64 number)
{
    return position.sequence - (qint64(position.number) - number);
}

} // namespace

DeliveryLedger::DeliveryLedger(QString fileName, SampleLog* log)
    : m_file(std::move(fileName)), m_log(log)
{
    load();
}

// The file of the cursor.

void DeliveryLedger::load()
{
    const std::optional<QByteArray> stored = m_file.load();
    if (!stored) return;
    std::optional<DeliveryCursor> cursor = cursorOf(*stored);
    if (cursor)
        m_cursor = std::move(*cursor);
    else
        tellOperator(m_file.name() + QLatin1String(" does not say which rows the broker has: the "
                                                   "whole history is sent again"));
}

/// What is in flight may be lost: it is stored as owed.
void DeliveryLedger::store()
{
    DeliveryCursor cursor = m_cursor;
    cursor.owed.add(m_live);
    for (const RowRanges& batch : m_flying)
        cursor.owed.add(batch);
    m_file.store(cursorBytes(cursor));
}

bool DeliveryLedger::isStoring() const
{
    return m_file.isStoring();
}

void DeliveryLedger::awaitStored() const
{
    m_file.awaitStored();
}

// Where the history's file stands.

/// Until the first commit of this run is seen, the file may be another one than the cursor's, or
/// lack rows.
bool DeliveryLedger::isFileKnown() const
{
    return m_firstNumber >= 0;
}

/// Gives sequences to rows whose commit is known.
void DeliveryLedger::settle()
{
    const LogPosition position = m_log->position();
    if (position.file == 0) return;
    const bool isAnother =
        position.file != m_cursor.file || qint64(position.firstNumber) != m_firstNumber;
    if (isAnother) rebase(position);
    m_cursor.end = position.sequence;
    const qint64 upTo = std::min(m_sent, qint64(position.number));
    if (m_isBorn && upTo > m_mapped) map(position, upTo);
}

void DeliveryLedger::map(const LogPosition& position, qint64 upTo)
{
    m_live.add(sequenceOf(position, m_mapped + 1), sequenceOf(position, upTo));
    for (const auto& [first, last] : m_waiting.ranges()) {
        if (first > upTo) break;
        const qint64 from = sequenceOf(position, first);
        const qint64 until = sequenceOf(position, std::min(last, upTo));
        m_live.remove(from, until);
        m_cursor.owed.add(from, until);
    }
    m_waiting.removeUpTo(upTo);
    m_mapped = upTo;
    m_cursor.top = sequenceOf(position, upTo);
    m_topTime = position.time;
}

/// The file is seen for the first time, or is another one now: what was in the one before and is
/// not proven cannot be sent again.
void DeliveryLedger::rebase(const LogPosition& position)
{
    const qint64 first = qint64(position.firstNumber);
    const qint64 base = sequenceOf(position, first);
    const qint64 waiting = m_waiting.count();
    m_waiting.removeUpTo(first);
    const qint64 unsent = waiting - m_waiting.count();
    const qint64 old = std::max<qint64>(first - m_mapped, 0);
    m_cursor.dropped += m_isBorn ? unsent : old;
    if (m_isBorn) m_unprovable += std::max<qint64>(std::min(first, m_sent) - m_mapped - unsent, 0);
    const bool lostRows = position.file == m_cursor.file && base < m_cursor.top;
    if (isFileKnown()) forgetFlights();
    if (position.file == m_cursor.file)
        takeSameFile(base);
    else
        takeOtherFile(position, base);
    m_cursor.top = base;
    m_topTime = position.time;
    m_mapped = std::max(m_mapped, first);
    m_firstNumber = first;
    m_cursor.end = position.sequence;
    store();
    if (lostRows) m_file.awaitStored(); // an older cursor takes the new rows for proven
}

/// Rows that were sent and that no mark has proven.
qint64 DeliveryLedger::underWay() const
{
    qint64 rows = m_live.count();
    for (const RowRanges& batch : m_flying)
        rows += batch.count();
    return rows;
}

void DeliveryLedger::forgetFlights()
{
    m_unprovable += underWay();
    m_provableFrom = m_orders + 1;
    m_live.clear();
    m_flying.clear();
    m_marks.clear();
    m_lastMark.top = 0;
    m_lastMark.batches = m_batches;
    m_pick = Pick();
    m_walkEnd = 0;
}

/// Behind a loss of power, or in an older copy, the last rows are missing: their sequences are
/// given to new rows, which nobody has.
void DeliveryLedger::takeSameFile(qint64 base)
{
    const qint64 before = m_cursor.owed.count() + m_cursor.held.count();
    m_cursor.owed.removeFrom(base + 1);
    m_cursor.held.cutBehind(base);
    m_cursor.dropped += before - m_cursor.owed.count() - m_cursor.held.count();
    m_cursor.owed.add(m_cursor.top + 1, base);
}

void DeliveryLedger::takeOtherFile(const LogPosition& position, qint64 base)
{
    if (m_cursor.file != 0) {
        m_cursor.dropped += m_cursor.owed.count() + m_cursor.held.count();
        if (!isFileKnown()) m_cursor.dropped += std::max<qint64>(m_cursor.end - m_cursor.top, 0);
    }
    m_cursor.owed.clear();
    m_cursor.held.clear();
    m_cursor.file = position.file;
    m_cursor.owed.add(std::max<qint64>(m_log->oldestSequence(), 1), base);
}

// Sessions.

void DeliveryLedger::born(quint64 number)
{
    const qint64 last = qint64(number);
    if (m_log)
        m_waiting.add((m_isBorn ? m_sent : m_mapped) + 1, last);
    else
        m_cursor.dropped += std::max<qint64>(last - m_sent, 0);
    m_sent = std::max(m_sent, last);
    if (std::exchange(m_isBorn, true)) return;
    m_lastMark = Sent();
    m_lastMark.batches = m_batches;
    m_historyTime = 0;
    if (!m_log) store();
}

void DeliveryLedger::ended()
{
    if (!std::exchange(m_isBorn, false)) return;
    m_cursor.owed.add(m_live);
    for (const RowRanges& batch : m_flying)
        m_cursor.owed.add(batch);
    m_live.clear();
    m_flying.clear();
    m_marks.clear();
    m_pick = Pick();
    m_cursor.held.jumped();
    m_cursor.dropped += std::exchange(m_unprovable, 0);
    store();
}

/// A row can be missed long after it was sent for all that was known then.
void DeliveryLedger::missed(quint64 first, quint64 last)
{
    const qint64 begin = qint64(first), end = qint64(last);
    if (begin > end) return;
    if (!m_log) {
        m_cursor.dropped += end - begin + 1;
        return;
    }
    m_waiting.add(std::max(begin, m_mapped + 1), end);
    const qint64 known = std::min(end, m_mapped);
    const qint64 inFile = std::max<qint64>(begin, m_firstNumber + 1);
    if (begin < inFile) m_cursor.dropped += std::min(inFile - 1, known) - begin + 1;
    if (inFile > known) return;
    const LogPosition position = m_log->position();
    const bool isSame =
        position.file == m_cursor.file && qint64(position.firstNumber) == m_firstNumber;
    if (!isSame) {
        m_cursor.dropped += known - inFile + 1;
        return;
    }
    m_live.remove(sequenceOf(position, inFile), sequenceOf(position, known));
    m_cursor.owed.add(sequenceOf(position, inFile), sequenceOf(position, known));
}

void DeliveryLedger::cameUnsent(quint64 number)
{
    if (m_log || m_isBorn) return;
    m_cursor.dropped += std::max<qint64>(qint64(number) - m_sent, 0);
    m_sent = std::max(m_sent, qint64(number));
}

void DeliveryLedger::sent(quint64 number)
{
    if (m_isBorn) m_sent = std::max(m_sent, qint64(number));
}

// Marks.

std::optional<DeliveryLedger::Mark> DeliveryLedger::nextMark()
{
    if (!m_log || !m_isBorn) return std::nullopt;
    settle();
    if (!isFileKnown()) return std::nullopt;
    const bool isLiveNew = m_live.from(m_lastMark.top + 1, -1).first >= 0;
    if (!isLiveNew && m_batches == m_lastMark.batches) return std::nullopt;
    m_lastMark = {++m_orders, m_cursor.top, m_batches};
    m_marks.push_back(m_lastMark);
    Mark mark;
    mark.file = m_cursor.file;
    mark.order = m_orders;
    mark.sequence = std::min(m_cursor.owed.from(0, m_cursor.top + 1).first - 1, m_cursor.top);
    mark.time = mark.sequence == m_cursor.top ? m_topTime : m_historyTime;
    return mark;
}

/// Acknowledgements come in the order of the marks: it proves those before it, too.
void DeliveryLedger::proven(const Mark& mark)
{
    const auto isIt = [&mark](const Sent& sent) { return sent.order == mark.order; };
    const auto found = std::find_if(m_marks.begin(), m_marks.end(), isIt);
    if (found == m_marks.end()) return;
    const Sent sent = *found;
    m_marks.erase(m_marks.begin(), found + 1);
    m_live.removeUpTo(sent.top);
    while (!m_flying.empty() && m_batches - m_flying.size() < sent.batches)
        m_flying.pop_front();
    if (sent.order >= m_provableFrom) m_unprovable = 0;
    store();
}

// Figures.

qint64 DeliveryLedger::behind()
{
    if (!m_log) return 0;
    settle();
    const qint64 named = m_cursor.owed.count() + m_cursor.held.count();
    if (m_isBorn) return named + m_waiting.count();
    return named + std::max<qint64>(m_cursor.end - m_cursor.top, 0);
}

qint64 DeliveryLedger::unproven()
{
    if (!m_log) return 0;
    settle();
    const qint64 unsent = std::max<qint64>(m_cursor.end - m_cursor.top, 0);
    return m_cursor.owed.count() + m_cursor.held.count() + underWay() + unsent;
}

qint64 DeliveryLedger::dropped() const
{
    return m_cursor.dropped;
}
