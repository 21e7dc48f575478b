#include "values/frameLog.h"

void FrameLog::add(qint64 time, FrameRecord::Direction direction, const QByteArray& bytes)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    LoggedFrame frame;
    frame.number = ++m_lastNumber;
    frame.time = time;
    frame.direction = direction;
    frame.bytes = QByteArray(bytes.constData(), bytes.size());
    m_frames.push_back(frame);
    if (m_frames.size() > MOST_FRAMES) m_frames.pop_front();
}

std::vector<LoggedFrame> FrameLog::since(quint64 number) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<LoggedFrame> frames;
    for (const LoggedFrame& frame : m_frames) {
        if (frame.number > number) frames.push_back(frame);
    }
    return frames;
}

quint64 FrameLog::lastNumber() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastNumber;
}
