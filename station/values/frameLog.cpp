#include "values/frameLog.h"

#include <algorithm>
#include <cstddef>

namespace {

// Of the fields of Kept.
constexpr quint64 TIME_MASK = (quint64(1) << 46) - 1;
constexpr quint64 DIRECTION_MASK = 3;

} // namespace

size_t FrameLog::mostOfEach(size_t links)
{
    const size_t share = MOST_OF_ALL_LINKS / std::max(links, size_t(1));
    return std::min(std::max(share, size_t(LEAST_FRAMES)), size_t(MOST_FRAMES));
}

void FrameLog::keep(size_t most)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_most = most;
    while (m_frames.size() > m_most)
        forgetOldest();
}

void FrameLog::add(qint64 time, FrameRecord::Direction direction, const QByteArray& bytes)
{
    const quint64 size = std::min(quint64(bytes.size()), quint64(MOST_BYTES_OF_FRAME));
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_lastNumber;
    Kept kept = {};
    kept.time = quint64(time) & TIME_MASK;
    kept.direction = direction & DIRECTION_MASK;
    kept.size = size & MOST_BYTES_OF_FRAME;
    m_frames.push_back(kept);
    m_bytes.insert(m_bytes.end(), bytes.constData(), bytes.constData() + size);
    if (m_frames.size() > m_most) forgetOldest();
}

void FrameLog::forgetOldest()
{
    m_bytes.erase(m_bytes.begin(), m_bytes.begin() + std::ptrdiff_t(m_frames.front().size));
    m_frames.pop_front();
}

std::vector<LoggedFrame> FrameLog::since(quint64 number) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<LoggedFrame> frames;
    quint64 next = m_lastNumber - m_frames.size();
    auto bytes = m_bytes.begin();
    for (const Kept& kept : m_frames) {
        const auto end = bytes + std::ptrdiff_t(kept.size);
        if (++next > number) {
            LoggedFrame frame;
            frame.number = next;
            frame.time = qint64(kept.time);
            frame.direction = FrameRecord::Direction(kept.direction);
            frame.bytes.resize(int(kept.size));
            std::copy(bytes, end, frame.bytes.begin());
            frames.push_back(frame);
        }
        bytes = end;
    }
    return frames;
}

quint64 FrameLog::lastNumber() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastNumber;
}
