#ifndef RECENT_MESSAGES_H
#define RECENT_MESSAGES_H

#include "events/streamMessage.h"

#include <deque>

/// The newest messages of the stream, for clients that are not quite at its end. A client keeps
/// only its place in them, so one that is slow or stopped costs no memory of its own.
///
/// Of the HTTP thread.
class RecentMessages
{
public:
    struct Limits
    {
        size_t messages;
        qint64 bytes;
        qint64 age; ///< microseconds
    };

    explicit RecentMessages(const Limits& limits) : m_limits(limits) {}

    /// Adds a message with a greater id than all before.
    /// @param now  microseconds
    void add(const SharedMessage& message, qint64 now);

    /// Forgets what is beyond a limit. One message may be larger than all bytes allow.
    void forget(qint64 now);

    /// Forgets all messages.
    void clear();

    /// The oldest message behind an id; null: there is none.
    SharedMessage after(quint64 id) const;

    /// Whether a message behind the id has been forgotten.
    bool isGone(quint64 id) const
    {
        return m_lastForgotten > id;
    }

private:
    struct Dated
    {
        SharedMessage message;
        qint64 since; ///< microseconds
    };

    bool isBeyondLimits(qint64 now) const;
    void forgetOldest();

    const Limits m_limits;
    std::deque<Dated> m_messages; ///< ascending by id
    qint64 m_bytes = 0;
    quint64 m_lastForgotten = 0; ///< an id
};

#endif
