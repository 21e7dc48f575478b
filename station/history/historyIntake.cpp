#include "history/historyIntake.h"

#include "plan/tagValue.h"

#include <algorithm>
#include <cmath>

namespace {

enum { LONGEST_PAUSE = 3000000, LARGEST_CLOCK_STEP = 1000, MICROSECONDS = 1000 };

/// A nan is the same as a nan only.
bool isBeyond(double deadband, double a, double b)
{
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) != std::isnan(b);
    return a != b && !(std::fabs(a - b) <= deadband);
}

} // namespace

HistoryIntake::HistoryIntake(const Limits& limits, const StationClock& clock)
    : m_limits(limits),
      m_clock(clock),
      m_begin(clock.wall()),
      m_steady(clock.steady()),
      m_wall(m_begin),
      m_runBegin(m_begin)
{
}

void HistoryIntake::setRowListener(RowListener* listener)
{
    m_listener = listener;
}

HistoryIntake::Kept& HistoryIntake::keptOf(const LinkValues& link, int tag)
{
    const QString& name = link.tags()[size_t(tag)].name;
    const QPair<QString, QString> key(link.name(), name);
    const auto found = m_kept.find(key);
    if (found != m_kept.end()) return *found;
    Kept kept;
    kept.tag = int(m_kept.size());
    kept.name = {link.name(), name};
    m_newTags.push_back(kept.name);
    return *m_kept.insert(key, kept);
}

void HistoryIntake::breakRun(qint64 end, qint64 begin)
{
    Note note;
    note.kind = Note::BREAK;
    note.end = end;
    note.begin = begin;
    if (hasRoom()) m_notes.push_back(note);
    m_runBegin = begin;
    for (Kept& kept : m_kept) {
        kept.isKept = false;
        kept.row.time = begin;
    }
}

/// The two clocks go on together. Where one went on alone, the clock was set; where both went on
/// for long, the process or the machine was stopped.
void HistoryIntake::pulse()
{
    const qint64 steady = m_clock.steady();
    const qint64 wall = m_clock.wall();
    const qint64 passed = (steady - m_steady) / MICROSECONDS;
    const bool wasStopped = steady - m_steady > LONGEST_PAUSE;
    const bool wasSet = std::abs(wall - m_wall - passed) > LARGEST_CLOCK_STEP;
    if (wasStopped || wasSet) breakRun(m_wall, wall);
    m_steady = steady;
    m_wall = wasSet ? wall : std::max(m_wall, wall);
}

/// A good value has the time of its answer; a value that grew old, the time at which it did. In a
/// run time never goes back.
HistoryRow HistoryIntake::rowOf(const Tag& tag, const TagReading& reading) const
{
    HistoryRow row;
    const std::optional<double> value = tagValueNumber(tag, reading.bytes);
    row.hasValue = value.has_value();
    row.value = value.value_or(0);
    row.quality = reading.quality;
    row.time = reading.quality == GOOD    ? reading.time
               : reading.quality == STALE ? reading.staleSince
                                          : m_wall;
    return row;
}

bool HistoryIntake::isDue(const Kept& kept, const HistoryRow& row, double deadband) const
{
    if (!kept.isKept || kept.row.quality != row.quality || kept.row.hasValue != row.hasValue)
        return true;
    if (isBeyond(deadband, kept.row.value, row.value)) return true;
    return m_steady - kept.noted >= m_limits.overrideMs * MICROSECONDS;
}

/// Once there was none, nothing more is noted until everything is taken: what is kept has no hole.
bool HistoryIntake::hasRoom()
{
    if (!m_fullSince && m_notes.size() >= m_limits.mostRows) m_fullSince = m_wall;
    return !m_fullSince;
}

void HistoryIntake::note(Kept& kept, HistoryRow row)
{
    row.time = std::max(kept.row.time, std::max(m_runBegin, std::min(row.time, m_wall)));
    kept.isKept = true; // a row that finds no room, too: take() forgets it all
    kept.row = row;
    kept.noted = m_steady;
    if (!hasRoom()) {
        ++m_dropped;
        return tell(kept, 0);
    }
    Note note;
    note.tag = kept.tag;
    note.row = row;
    m_notes.push_back(note);
    tell(kept, ++m_numbers);
}

void HistoryIntake::tell(const Kept& kept, quint64 number) const
{
    if (m_listener == nullptr) return;
    Sample sample;
    sample.link = kept.name.link;
    sample.tag = kept.name.tag;
    sample.time = kept.row.time;
    sample.value = kept.row.value;
    sample.hasValue = kept.row.hasValue;
    sample.quality = kept.row.quality;
    sample.number = number;
    m_listener->rowNoted(sample);
}

void HistoryIntake::consider(Kept& kept, const Tag& tag, const TagReading& reading)
{
    HistoryRow row = rowOf(tag, reading);
    if (!isDue(kept, row, tag.deadband)) return;
    const bool isAgain = kept.isKept && kept.row.quality == row.quality;
    if (isAgain && row.quality == STALE) row.time = m_wall;
    note(kept, row);
}

void HistoryIntake::tagChanged(const LinkValues& link, int tag, const TagReading& reading)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isClosed) return;
    pulse();
    Kept& kept = keptOf(link, tag);
    kept.change = ++m_changes;
    kept.look = m_looks;
    consider(kept, link.tags()[size_t(tag)], reading);
}

/// The links are read without the lock: their threads hold theirs when they come here. What changes
/// meanwhile is newer than what was read, which is then passed over.
void HistoryIntake::look(const Links& links)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        pulse();
        ++m_looks;
    }
    for (const std::shared_ptr<const LinkValues>& link : links) {
        quint64 changes = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            changes = m_changes;
        }
        const std::vector<TagReading> readings = link->readings();
        const std::lock_guard<std::mutex> lock(m_mutex);
        pulse();
        for (size_t tag = 0; tag < readings.size(); ++tag) {
            Kept& kept = keptOf(*link, int(tag));
            kept.look = m_looks;
            if (kept.change <= changes) consider(kept, link->tags()[tag], readings[tag]);
        }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    endUnseen();
}

/// A link or a tag that the configuration no longer has is told by nobody: its value must not hold
/// on.
void HistoryIntake::endUnseen()
{
    for (Kept& kept : m_kept) {
        if (kept.look == m_looks || !kept.isKept || kept.row.quality == BAD) continue;
        HistoryRow row = kept.row;
        row.quality = BAD;
        row.time = m_wall;
        note(kept, row);
    }
}

/// When rows found no room, the run ends where the first of them came: what held later is not
/// known.
HistoryIntake::Taken HistoryIntake::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    pulse();
    Taken taken;
    taken.notes.swap(m_notes);
    if (m_fullSince) {
        const qint64 end = *m_fullSince;
        m_fullSince.reset();
        breakRun(end, m_wall);
        taken.notes.insert(taken.notes.end(), m_notes.begin(), m_notes.end());
        m_notes.clear();
    }
    taken.newTags.swap(m_newTags);
    taken.until = m_wall;
    taken.number = m_numbers;
    return taken;
}

void HistoryIntake::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isClosed = true;
}

void HistoryIntake::writeAllAgain()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (Kept& kept : m_kept)
        kept.isKept = false;
}

qint64 HistoryIntake::dropped() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_dropped;
}
