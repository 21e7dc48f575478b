#include "values/linkValues.h"

#include "plan/durationText.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <set>
#include <utility>

namespace {

const char NOT_ANSWERED_YET[] = "it has not answered yet";

enum { SHORTEST_LIMIT = 2 * SECOND, TURNS_OF_LIMIT = 3 };

} // namespace

LinkValues::LinkValues(QString name, SharedTags tags, const StationClock& clock)
    : m_name(std::move(name)),
      m_tags(std::move(tags)),
      m_clock(clock),
      m_limits(m_tags.all().size()),
      m_known(m_tags.all().size())
{
    const QString notRead = QLatin1String("not read yet"); // one text for all tags
    for (Known& known : m_known)
        known.reading.trouble = notRead;
    std::set<int> stations;
    for (const Tag& tag : m_tags)
        stations.insert(tag.station);
    m_state.since = m_clock.wall();
    for (const int station : stations)
        m_state.stations.push_back(
            {station, false, m_state.since, QLatin1String(NOT_ANSWERED_YET)});
}

/// Tags of one turn share one text.
void LinkValues::setTurns(std::vector<std::optional<qint64>> turns)
{
    Limit last;
    for (size_t tag = 0; tag < std::min(turns.size(), m_limits.size()); ++tag) {
        Limit& limit = m_limits[tag];
        limit = Limit();
        if (!turns[tag]) continue;
        limit.age = std::max<qint64>(TURNS_OF_LIMIT * *turns[tag], SHORTEST_LIMIT);
        if (limit.age != last.age) {
            last.age = limit.age;
            last.trouble =
                QLatin1String("no answer for more than ") + durationText(*limit.age / MILLISECOND);
        }
        limit.trouble = last.trouble;
    }
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

void LinkValues::setEvents(StationEvents* events)
{
    m_events = events;
}

// Reading. The caller of the private functions holds m_mutex.

/// The last moment at which the tag's value is good, on the steady clock; empty: it has none.
std::optional<qint64> LinkValues::staleAt(size_t tag) const
{
    const Known& known = m_known[tag];
    if (known.reading.quality != GOOD || !m_limits[tag].age) return std::nullopt;
    return known.readAt + *m_limits[tag].age;
}

bool LinkValues::isGood(size_t tag, qint64 now) const
{
    const std::optional<qint64> until = staleAt(tag);
    return m_known[tag].reading.quality == GOOD && (!until || now <= *until);
}

TagReading LinkValues::shown(size_t tag, qint64 now) const
{
    const Known& known = m_known[tag];
    TagReading reading = known.reading;
    if (reading.quality == BAD || isGood(tag, now)) return reading;
    reading.quality = STALE;
    reading.staleSince = reading.time + *m_limits[tag].age / MILLISECOND;
    reading.trouble = known.unanswered.isEmpty() ? m_limits[tag].trouble : known.unanswered;
    return reading;
}

TagReading LinkValues::reading(int tag) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return shown(size_t(tag), m_clock.steady());
}

std::vector<TagReading> LinkValues::readings() const
{
    std::vector<TagReading> all;
    all.reserve(m_known.size());
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock.steady();
    for (size_t tag = 0; tag < m_known.size(); ++tag)
        all.push_back(shown(tag, now));
    return all;
}

std::optional<qint64> LinkValues::nextStale() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const qint64 now = m_clock.steady();
    std::optional<qint64> next;
    for (size_t tag = 0; tag < m_known.size(); ++tag) {
        const std::optional<qint64> until = staleAt(tag);
        if (until && *until >= now) next = std::min(next.value_or(*until), *until);
    }
    return next;
}

LinkState LinkValues::state() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    LinkState state = m_state;
    state.figures = m_figures.at(m_threadStart ? m_clock.steady() - *m_threadStart : 0);
    return state;
}

// The link. The caller holds m_mutex.

/// On a lost link no value is good and no station answers, whatever else was told.
void LinkValues::changeLink(bool connected, const QString& trouble, qint64 now)
{
    noteClock(now);
    m_figures.linkChanged(connected, now);
    m_state.standing = connected ? LINK_UP : LINK_LOST;
    m_state.trouble = trouble;
    m_state.since = m_clock.wall();
    ++m_version;
    const QString why = QLatin1String(connected ? NOT_ANSWERED_YET : "link lost: ") + trouble;
    for (StationStanding& standing : m_state.stations) {
        if (standing.answers) standing.since = m_state.since;
        standing.answers = false;
        standing.trouble = why;
    }
    if (connected) return tellStanding();
    for (size_t tag = 0; tag < m_known.size(); ++tag)
        becomeBad(tag, why);
    tellStanding();
}
