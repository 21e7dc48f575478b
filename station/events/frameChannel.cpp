#include "events/frameChannel.h"

#include "api/frameDocument.h"

#include <utility>

FrameChannel::FrameChannel(const QString& link)
    : m_link(link), m_messages({MOST_FRAMES, MOST_BYTES, LONGEST_AGE})
{
}

void FrameChannel::start(std::shared_ptr<const FrameLog> log)
{
    m_log = std::move(log);
    m_lastNumber = m_log ? m_log->lastNumber() : 0;
}

/// What is new in the log, at most MOST_FRAMES of it.
std::vector<LoggedFrame> FrameChannel::takeLogged(const std::shared_ptr<const FrameLog>& log)
{
    if (log != m_log) {
        m_log = log;
        m_lastNumber = 0;
        m_gatherer = FrameGatherer();
    }
    if (!m_log || m_log->lastNumber() == m_lastNumber) return {};
    std::vector<LoggedFrame> logged = m_log->since(m_lastNumber);
    if (logged.size() > MOST_FRAMES) logged.erase(logged.begin(), logged.end() - MOST_FRAMES);
    return logged;
}

QByteArray FrameChannel::newFrames(const std::shared_ptr<const FrameLog>& log)
{
    std::vector<GatheredFrame> frames;
    for (const LoggedFrame& logged : takeLogged(log)) {
        if (logged.number != m_lastNumber + 1) {
            m_gatherer.flushAtHole();
            m_next += logged.number - m_lastNumber - 1;
        }
        m_lastNumber = logged.number;
        const std::vector<GatheredFrame> gathered = m_gatherer.add(recordOf(logged));
        frames.insert(frames.end(), gathered.begin(), gathered.end());
    }
    if (frames.empty()) return QByteArray();
    JsonText json;
    json.beginObject().key("link").text(m_link).key("first").integer(qint64(m_next));
    json.key("frames").beginArray();
    for (const GatheredFrame& frame : frames)
        appendFrame(json, frame);
    m_next += frames.size();
    return json.endArray().endObject().document();
}
