#include "session/sharedValues.h"

#include <chrono>
#include <utility>

SharedValues::SharedValues(size_t tags, bool keepFrames) : m_keepFrames(keepFrames), m_tags(tags) {}

/// The caller holds m_mutex.
void SharedValues::news()
{
    m_hasNews = true;
    m_somethingNew.notify_one();
}

void SharedValues::noteChange(int tag, qint64 now)
{
    if (m_news.changes.size() < MOST_CHANGES)
        m_news.changes.push_back({tag, now, m_tags[size_t(tag)]});
    else
        ++m_news.changesMissed;
    news();
}

// The states share their text buffers with copies that the owner's thread destroys. The functions
// below assign a temporary copy: the reference count is then changed in code that the thread
// sanitizer sees, not inside Qt's library.

void SharedValues::tagShown(int tag, const QByteArray& bytes, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    TagState& state = m_tags[size_t(tag)];
    const bool changed = state.bytes != bytes;
    const bool wasGood = state.good;
    if (changed && !state.bytes.isEmpty()) ++state.changes;
    state.bytes = QByteArray(bytes);
    state.readAt = now;
    state.good = true;
    state.trouble = QString();
    if (changed || !wasGood) noteChange(tag, now);
}

void SharedValues::tagValue(int tag, const QByteArray& bytes, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    TagState& state = m_tags[size_t(tag)];
    if (state.bytes == bytes) return;
    if (!state.bytes.isEmpty()) ++state.changes;
    state.bytes = QByteArray(bytes);
    noteChange(tag, now);
}

void SharedValues::tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const int tag : tags) {
        TagState& state = m_tags[size_t(tag)];
        if (!state.good && state.trouble == trouble) continue;
        state.good = false;
        state.trouble = QString(trouble);
        noteChange(tag, now);
    }
}

void SharedValues::jobEnded(const JobEnd& end)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_news.jobEnds.push_back(end);
    news();
}

void SharedValues::recipeProgress(int job, int done)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recipeJob = job;
    m_news.recipeBlocksDone = done;
    news();
}

void SharedValues::exchanged(const FINISHED_EXCHANGE& finished, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (finished.end == END_SILENT) noteFrame(FrameRecord::NO_ANSWER, QByteArray(), now);
    m_figures.exchanged(finished, now);
}

void SharedValues::fenced(const EndedExchange& fence, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (fence.end == END_SILENT) noteFrame(FrameRecord::NO_ANSWER, QByteArray(), now);
    m_figures.fenced();
}

void SharedValues::echoFound()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_news.isEchoFound = true;
    news();
}

void SharedValues::linkChanged(bool connected, const QString& trouble, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_figures.linkChanged(connected, now);
    m_news.linkEvents.push_back({now, connected, trouble});
    news();
}

void SharedValues::frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    noteFrame(direction, bytes, now);
}

/// The caller holds m_mutex.
void SharedValues::noteFrame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now)
{
    if (!m_keepFrames) return;
    if (m_news.frames.size() >= MOST_FRAMES) {
        ++m_news.framesMissed;
        return;
    }
    FrameRecord record;
    record.time = now;
    record.direction = direction;
    record.bytes = bytes;
    m_news.frames.push_back(record);
    news();
}

void SharedValues::wireTaken(qint64 from, qint64 until)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_figures.wireTaken(from, until);
}

void SharedValues::waitForNews(int ms)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_somethingNew.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_hasNews; });
}

News SharedValues::takeNews()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    News taken;
    taken.recipeBlocksDone = m_news.recipeBlocksDone;
    taken.changesMissed = m_news.changesMissed;
    taken.framesMissed = m_news.framesMissed;
    std::swap(taken.isEchoFound, m_news.isEchoFound);
    std::swap(taken.changes, m_news.changes);
    std::swap(taken.linkEvents, m_news.linkEvents);
    std::swap(taken.jobEnds, m_news.jobEnds);
    std::swap(taken.frames, m_news.frames);
    m_hasNews = false;
    for (const JobEnd& end : taken.jobEnds) {
        if (end.job == m_recipeJob) m_news.recipeBlocksDone = 0;
    }
    return taken;
}

std::vector<TagState> SharedValues::tags() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_tags;
}

LinkFigures SharedValues::figures(qint64 now) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_figures.at(now);
}
