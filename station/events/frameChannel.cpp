#include "events/frameChannel.h"

#include "values/jsonText.h"

FrameChannel::FrameChannel(const QString& link)
    : m_link(link), m_messages({MOST_FRAMES, MOST_BYTES, LONGEST_AGE})
{
}

void FrameChannel::start(std::shared_ptr<const FrameLog> log)
{
    m_log = std::move(log);
    m_lastNumber = m_log ? m_log->lastNumber() : 0;
}

QByteArray FrameChannel::newFrames(const std::shared_ptr<const FrameLog>& log)
{
    if (log != m_log) {
        m_log = log;
        m_lastNumber = 0;
    }
    if (!m_log || m_log->lastNumber() == m_lastNumber) return QByteArray();
    const std::vector<LoggedFrame> frames = m_log->since(m_lastNumber);
    if (frames.empty()) return QByteArray();
    const size_t from = frames.size() > MOST_FRAMES ? frames.size() - MOST_FRAMES : 0;
    m_lastNumber = frames.back().number;
    JsonText json;
    json.beginObject().key("link").text(m_link);
    json.key("first").integer(qint64(frames[from].number));
    json.key("frames").beginArray();
    for (size_t at = from; at < frames.size(); ++at) {
        const LoggedFrame& frame = frames[at];
        json.beginObject().key("time").integer(frame.time);
        json.key("direction").word(frame.direction == FrameRecord::RECEIVED ? "<" : ">");
        json.key("hex").text(QString::fromLatin1(frame.bytes.toHex(' '))).endObject();
    }
    return json.endArray().endObject().document();
}
