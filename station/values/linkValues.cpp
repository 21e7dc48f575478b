#include "values/linkValues.h"

#include <algorithm>
#include <utility>

namespace {

enum { SHORTEST_LIMIT = 2000000, TURNS_OF_LIMIT = 3 };

} // namespace

const char* qualityText(Quality quality)
{
    switch (quality) {
    case GOOD:
        return "good";
    case STALE:
        return "stale";
    case BAD:
        return "bad";
    }
    return "bad";
}

const char* linkStandingText(LinkStanding standing)
{
    switch (standing) {
    case LINK_OPENING:
        return "opening";
    case LINK_UP:
        return "up";
    case LINK_LOST:
        return "lost";
    }
    return "lost";
}

LinkValues::LinkValues(QString name, std::vector<Tag> tags, const StationClock& clock)
    : m_name(std::move(name)), m_tags(std::move(tags)), m_clock(clock), m_known(m_tags.size())
{
    m_state.since = m_clock.wall();
    for (Known& known : m_known)
        known.reading.trouble = QLatin1String("not read yet");
}

void LinkValues::setTurns(std::vector<std::optional<qint64>> turns)
{
    m_turns = std::move(turns);
}

void LinkValues::setJobEnded(JobEnded ended, RecipeProgress progress)
{
    m_jobEnded = std::move(ended);
    m_recipeProgress = std::move(progress);
}

void LinkValues::addListener(ValueListener* listener)
{
    m_listeners.push_back(listener);
}

TagReading LinkValues::shown(const Known& known, int tag, qint64 now) const
{
    TagReading reading = known.reading;
    const std::optional<qint64> turn =
        size_t(tag) < m_turns.size() ? m_turns[size_t(tag)] : std::optional<qint64>();
    if (reading.quality != GOOD || !turn) return reading;
    const qint64 limit = std::max<qint64>(TURNS_OF_LIMIT * *turn, SHORTEST_LIMIT);
    if (now - known.readAt <= limit) return reading;
    reading.quality = STALE;
    reading.staleSince = reading.time + limit / 1000;
    reading.trouble = QLatin1String("no answer in time");
    return reading;
}

TagReading LinkValues::reading(int tag) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return shown(m_known[size_t(tag)], tag, m_clock.steady());
}

std::vector<TagReading> LinkValues::readings() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock.steady();
    std::vector<TagReading> all;
    for (size_t tag = 0; tag < m_known.size(); ++tag)
        all.push_back(shown(m_known[tag], int(tag), now));
    return all;
}

LinkState LinkValues::state() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_state;
}

/// The caller holds m_mutex.
void LinkValues::tellChange(int tag)
{
    const TagReading reading = shown(m_known[size_t(tag)], tag, m_clock.steady());
    for (ValueListener* const listener : m_listeners)
        listener->tagChanged(*this, tag, reading);
}

void LinkValues::tagRead(int tag, const QByteArray& bytes, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    Known& known = m_known[size_t(tag)];
    const bool isNew = known.reading.bytes != bytes;
    const bool isBack = known.reading.quality != GOOD;
    known.readAt = m_clock.steady();
    known.reading.time = m_clock.wall();
    known.reading.quality = GOOD;
    known.reading.trouble = QString();
    if (isNew) {
        known.reading.bytes = bytes;
        known.reading.changed = known.reading.time;
    }
    if (isNew || isBack) tellChange(tag);
}

void LinkValues::tagValue(int, const QByteArray&, qint64) {}

void LinkValues::tagsBad(const std::vector<int>& tags, const QString& trouble, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const int tag : tags) {
        TagReading& reading = m_known[size_t(tag)].reading;
        if (reading.quality == BAD && reading.trouble == trouble) continue;
        reading.quality = BAD;
        reading.trouble = trouble;
        tellChange(tag);
    }
}

void LinkValues::jobEnded(const JobEnd& end)
{
    if (m_jobEnded) m_jobEnded(end);
}

void LinkValues::recipeProgress(int job, int done)
{
    if (m_recipeProgress) m_recipeProgress(job, done);
}

void LinkValues::exchanged(const FINISHED_EXCHANGE&, qint64) {}

void LinkValues::fenced(const EndedExchange&, qint64) {}

void LinkValues::echoFound() {}

void LinkValues::linkChanged(bool connected, const QString& trouble, qint64)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_state.standing = connected ? LINK_UP : LINK_LOST;
    m_state.trouble = trouble;
    m_state.since = m_clock.wall();
}

void LinkValues::frame(FrameRecord::Direction, const QByteArray&, qint64) {}

void LinkValues::wireTaken(qint64, qint64) {}
