#ifndef FRAME_CHANNEL_H
#define FRAME_CHANNEL_H

#include "events/recentMessages.h"
#include "session/frameGatherer.h"
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

    /// The frames since the last call, the newest ones when there are many:
    /// {"link","first","frames":[…]}, each as appendFrame() writes it. `first` is the number of the
    /// first frame; they count up by one, and what was skipped counts, too: a jump from one message
    /// to the next tells how much. Empty: there are none.
    /// @param log  the link's; another one than before is read from its begin. Null: no such link
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
    std::vector<LoggedFrame> takeLogged(const std::shared_ptr<const FrameLog>& log);

    const QString m_link;
    std::shared_ptr<const FrameLog> m_log;
    quint64 m_lastNumber = 0; ///< of the log
    quint64 m_next = 1;       ///< the number of the next frame for the clients
    FrameGatherer m_gatherer;
    RecentMessages m_messages;
};

#endif
