#include "events/streamClient.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace {

const qint64 NO_LIMIT = std::numeric_limits<qint64>::max();
const RecentMessages::Limits OF_RECENT = {std::numeric_limits<size_t>::max(),
                                          StreamSources::MOST_BYTES, StreamSources::LONGEST_AGE};
const RecentMessages::Limits OF_EVENTS = {StreamSources::MOST_EVENTS, NO_LIMIT, NO_LIMIT};

/// Ends a message that was sent in part. Of two names or ids the last counts, so the client takes
/// the message for a `gap` and its place for the one before.
SharedMessage endCutShort(const StreamMessage& message, qint64 sent)
{
    QByteArray text;
    if (message.text.at(int(sent) - 1) != '\n') text.append('\n');
    text.append("id: ").append(QByteArray::number(message.id - 1));
    text.append("\nevent: gap\n\n");
    return std::make_shared<const StreamMessage>(StreamMessage{message.id, text});
}

} // namespace

StreamSources::StreamSources() : recent(OF_RECENT), events(OF_EVENTS) {}

StreamClient::StreamClient(std::shared_ptr<const StreamSources> sources, quint64 after,
                           std::shared_ptr<const FrameChannel> frames)
    : m_sources(std::move(sources)), m_frames(std::move(frames)), m_place(after)
{
}

qint64 StreamClient::read(char* to, size_t size)
{
    m_hasTaken = true;
    m_isStalled = false;
    size_t filled = 0;
    while (filled < size && hasCurrent()) {
        const QByteArray& text = m_current->text;
        const size_t rest = size_t(text.size() - m_sent);
        const size_t count = std::min(rest, size - filled);
        std::memcpy(to + filled, text.constData() + m_sent, count);
        filled += count;
        m_sent += qint64(count);
        if (count == rest) m_current = nullptr;
    }
    return filled > 0 ? qint64(filled) : qint64(NOTHING_YET);
}

/// Begins the next message when the last one is sent. False: there is none.
bool StreamClient::hasCurrent()
{
    if (m_current) return true;
    m_current = nextMessage();
    m_sent = 0;
    if (m_current) m_place = m_current->id;
    return m_current != nullptr;
}

bool StreamClient::hasNews() const
{
    if (m_current || m_full || isPlaceGone()) return true;
    if (m_state == FOLLOWING) return nextFollowing() != nullptr;
    return m_sources->events.after(m_place) != nullptr;
}

/// Whether a message that it would send next is forgotten.
bool StreamClient::isPlaceGone() const
{
    return m_state == FOLLOWING && m_sources->recent.isGone(m_place);
}

SharedMessage StreamClient::nextMessage()
{
    if (isPlaceGone()) m_state = BEHIND;
    return m_state == BEHIND ? nextBehind() : nextFollowing();
}

SharedMessage StreamClient::nextBehind()
{
    const SharedMessage event = m_sources->events.after(m_place);
    if (event && (!m_full || event->id < m_full->id)) return event;
    if (m_full) m_state = FOLLOWING;
    return std::exchange(m_full, nullptr);
}

SharedMessage StreamClient::nextFollowing() const
{
    const SharedMessage message = m_sources->recent.after(m_place);
    const SharedMessage frames = m_frames ? m_frames->messages().after(m_place) : nullptr;
    if (!message || !frames) return message ? message : frames;
    return message->id < frames->id ? message : frames;
}

bool StreamClient::wantsFull() const
{
    return m_state == BEHIND && !m_current && !m_full && !m_isStalled;
}

void StreamClient::giveFull(const SharedMessage& full)
{
    m_full = full;
}

void StreamClient::fallBehind()
{
    m_state = BEHIND;
    m_full = nullptr;
}

void StreamClient::watch(qint64 now)
{
    if (std::exchange(m_hasTaken, false) || !hasNews()) m_lastTaken = now;
    if (now - m_lastTaken > LONGEST_STALL) letGo();
}

void StreamClient::letGo()
{
    if (std::exchange(m_isStalled, true)) return;
    m_full = nullptr;
    if (!m_current) return;
    m_state = BEHIND;
    m_place = m_current->id - 1;
    m_current = endCutShort(*m_current, m_sent);
    m_sent = 0;
}
