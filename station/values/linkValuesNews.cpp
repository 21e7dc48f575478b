// What the link's thread tells the value model.
#include "values/linkValues.h"

#include "wire/timeUnits.h"

#include <algorithm>

namespace {

bool isSame(const TagReading& a, const TagReading& b)
{
    return a.quality == b.quality && a.bytes == b.bytes && a.trouble == b.trouble;
}

} // namespace

// News of values. The caller of the private functions holds m_mutex.

/// Replaces what is known of a tag, and tells the change unless only times moved.
void LinkValues::become(size_t tag, const Known& known)
{
    const qint64 now = m_clock.steady();
    const TagReading before = shown(tag, now);
    m_known[tag] = known;
    const TagReading after = shown(tag, now);
    if (isSame(before, after)) return;
    ++m_version;
    for (ValueListener* const listener : m_listeners)
        listener->tagChanged(*this, int(tag), after);
}

/// The value and the time of its answer stay.
void LinkValues::becomeBad(size_t tag, const QString& trouble)
{
    Known known = m_known[tag];
    known.reading.quality = BAD;
    known.reading.trouble = trouble;
    become(tag, known);
}

void LinkValues::tagRead(int tag, const QByteArray& bytes, qint64 asOf)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock.steady();
    const qint64 readAt = readTime(asOf, now);
    const bool isNews = m_known[size_t(tag)].reading.bytes != bytes || !isGood(size_t(tag), now);
    if (isNews) return become(size_t(tag), answered(m_known[size_t(tag)], bytes, readAt, now));
    noteAnswer(m_known[size_t(tag)], readAt, now); // thousands a second bring the same value again
}

/// What is known of a tag behind an answer that brought its value.
LinkValues::Known LinkValues::answered(const Known& before, const QByteArray& bytes, qint64 readAt,
                                       qint64 now) const
{
    Known known = before;
    noteAnswer(known, readAt, now);
    known.reading.quality = GOOD;
    known.reading.trouble = QString();
    if (known.reading.bytes == bytes) return known;
    known.reading.bytes = QByteArray(bytes.constData(), bytes.size());
    known.reading.changed = known.reading.time;
    return known;
}

/// A value is as old as it can be: as old as the answer can be that tells it, see
/// SessionSink::tagRead(), and as the answer's bytes.
qint64 LinkValues::readTime(qint64 asOf, qint64 now) const
{
    const qint64 answerAt = m_threadStart ? *m_threadStart + asOf : now;
    return std::min({m_cameAfter.value_or(now), answerAt, now});
}

void LinkValues::noteAnswer(Known& known, qint64 readAt, qint64 now) const
{
    known.readAt = readAt;
    known.reading.time = m_clock.wall() - (now - known.readAt) / MILLISECOND;
    known.unanswered = QString();
}

void LinkValues::tagsBad(const std::vector<int>& tags, const QString& trouble, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const int tag : tags)
        becomeBad(size_t(tag), trouble);
}

/// A good value stays good until it is too old: other requests of its station are answered.
void LinkValues::tagsUnanswered(const std::vector<int>& tags, const QString& trouble, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const int tag : tags) {
        Known known = m_known[size_t(tag)];
        known.unanswered = trouble;
        if (known.reading.quality == BAD) known.reading.trouble = trouble;
        become(size_t(tag), known);
    }
}

/// The steady clock goes on at the pace of the thread's clock.
void LinkValues::noteClock(qint64 now)
{
    const qint64 start = m_clock.steady() - now;
    m_threadStart = std::min(m_threadStart.value_or(start), start);
}

void LinkValues::bytesCame(qint64 after, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    noteClock(now);
    m_cameAfter = *m_threadStart + after;
}

// News of the link.

void LinkValues::jobEnded(const JobEnd& end)
{
    if (m_jobEnded) m_jobEnded(end);
}

void LinkValues::recipeProgress(int job, int done)
{
    if (m_recipeProgress) m_recipeProgress(job, done);
}

void LinkValues::exchanged(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_figures.exchanged(finished, now);
    m_state.replies.add(finished.result == REPLY_RETRY ? -1 : finished.replyTime);
}

void LinkValues::fenced(const EndedExchange&, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_figures.fenced();
}

void LinkValues::stationChanged(int station, bool answers, const QString& trouble, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (StationStanding& standing : m_state.stations) {
        if (standing.station != station) continue;
        standing.trouble = trouble;
        if (standing.answers == answers) continue;
        standing.answers = answers;
        standing.since = m_clock.wall();
        ++m_version;
        tellStanding();
    }
}

void LinkValues::linkChanged(bool connected, const QString& trouble, qint64 now)
{
    QByteArray document;
    qint64 time = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        changeLink(connected, trouble, now);
        document = linkEventDocument(m_name, m_state);
        time = m_state.since;
    }
    if (m_events != nullptr) m_events->add(StationEvent::LINK, time, document);
}

/// With the lock held.
void LinkValues::tellStanding() const
{
    for (ValueListener* const listener : m_listeners)
        listener->standingChanged(*this, m_state);
}

void LinkValues::wireTaken(qint64 from, qint64 until)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_figures.wireTaken(from, until);
}

/// The end of a wait without an answer is no frame.
void LinkValues::frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64)
{
    if (direction == FrameRecord::NO_ANSWER) return;
    m_frames.add(m_clock.wall(), direction, bytes);
}
