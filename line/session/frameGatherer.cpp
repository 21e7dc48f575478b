#include "session/frameGatherer.h"

#include "wire/frameShape.h"
#include "wire/replyFrames.h"

namespace {

enum {
    MOST_HELD = 1024,
    LONGEST_FRAME = 256 ///< MODBUS over Serial Line V1.02, 2.5.1
};

} // namespace

GatheredFrame FrameGatherer::takeFirst(int bytes, GatheredFrame::Kind kind)
{
    GatheredFrame frame;
    frame.kind = kind;
    frame.time = m_times.front();
    frame.bytes = m_received.left(bytes);
    frame.request = m_request;
    m_received.remove(0, bytes);
    m_times.erase(m_times.begin(), m_times.begin() + bytes);
    return frame;
}

void FrameGatherer::takeAnswer(std::vector<GatheredFrame>& frames)
{
    const QByteArray reply = replyTo(m_request, m_received);
    if (reply.isEmpty()) return;
    const int ahead = int(m_received.indexOf(reply));
    if (ahead > 0) frames.push_back(takeFirst(ahead, GatheredFrame::STRAY));
    frames.push_back(takeFirst(int(reply.size()), GatheredFrame::ANSWER));
    m_replyDue = 0;
}

std::vector<GatheredFrame> FrameGatherer::add(const FrameRecord& record)
{
    std::vector<GatheredFrame> frames;
    if (record.direction == FrameRecord::NO_ANSWER) return frames;
    if (record.direction != FrameRecord::RECEIVED) {
        frames = flush();
        m_request = record.bytes;
        m_replyDue = dueReplyLength(m_request);
        const bool isFence = record.direction == FrameRecord::SENT_FENCE;
        frames.push_back({isFence ? GatheredFrame::FENCE : GatheredFrame::REQUEST, record.time,
                          record.bytes, record.bytes});
        return frames;
    }
    m_received += record.bytes;
    m_times.resize(size_t(m_received.size()), record.time);
    if (m_replyDue > 0) takeAnswer(frames);
    // Keeps the last bytes, because an answer may have begun in them.
    if (m_received.size() > MOST_HELD)
        frames.push_back(
            takeFirst(int(m_received.size()) - (LONGEST_FRAME - 1), GatheredFrame::STRAY));
    return frames;
}

std::vector<GatheredFrame> FrameGatherer::flush()
{
    if (m_received.isEmpty()) return {};
    return {takeFirst(int(m_received.size()), GatheredFrame::STRAY)};
}

std::vector<GatheredFrame> FrameGatherer::flushAtHole()
{
    std::vector<GatheredFrame> frames = flush();
    m_request.clear();
    m_replyDue = 0;
    return frames;
}
