#ifndef FRAME_CHANNEL_H
#define FRAME_CHANNEL_H

#include "events/recentMessages.h"
#include "values/frameLog.h"

#include <QString>

/// The frames of one link as messages of the stream, for the clients that asked for them.
///
/// Of the HTTP thread.
class FrameChannel
{
public:
    enum {
        MOST_FRAMES = 200, ///< of one message: more than a person can follow
        MOST_BYTES = 256 * 1024,
        LONGEST_AGE = 2000000 ///< microseconds
    };

    explicit FrameChannel(const QString& link);

    const QString& link() const
    {
        return m_link;
    }

    /// Leaves out what the link's log holds already.
    void start(std::shared_ptr<const FrameLog> log);

    /// The newest frames since the last call, {"link","first","frames":[…]}; empty: none. `first`
    /// is the number of the first frame, and they count up by one: a jump from one message to the
    /// next says how many frames were skipped.
    /// @param log  the link's; another one than before begins its numbers anew. Null: no link
    QByteArray newFrames(const std::shared_ptr<const FrameLog>& log);

    void add(const SharedMessage& message, qint64 now)
    {
        m_messages.add(message, now);
    }
    const RecentMessages& messages() const
    {
        return m_messages;
    }

private:
    const QString m_link;
    std::shared_ptr<const FrameLog> m_log;
    quint64 m_lastNumber = 0;
    QByteArray m_request; ///< the last that was sent, for the meaning of its reply
    RecentMessages m_messages;
};

#endif
