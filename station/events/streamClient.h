#ifndef STREAM_CLIENT_H
#define STREAM_CLIENT_H

#include "events/frameChannel.h"
#include "events/recentMessages.h"
#include "http/httpMessages.h"

#include <memory>

/// The messages that all clients of the stream send.
struct StreamSources
{
    enum { MOST_EVENTS = 1000, MOST_BYTES = 256 * 1024, LONGEST_AGE = 2000000 };

    StreamSources();

    RecentMessages recent; ///< values, events and beats, for clients that follow
    RecentMessages events; ///< the last link, write and recipe events, for clients that come back
};

/// One client of the stream: its place in the messages that all share.
///
///                +--------+   the full snapshot is sent    +-----------+
///   connect ---->| BEHIND |------------------------------->| FOLLOWING |
///                |        |<-------------------------------|           |
///                +--------+   the next message is gone,    +-----------+
///                             or other links or rights
///
///   BEHIND     sends the kept events behind its place, then the snapshot that it is given. In
///              this order the ids count up, and a client that is cut off misses none.
///   FOLLOWING  sends each message behind its place, its link's frames among them.
///
/// A client that takes nothing for a while lets go of the message that it has begun, because nobody
/// else may hold that message any more. When it goes on, it ends the message under the name `gap`,
/// whose data nobody reads, and is BEHIND.
///
/// Of the HTTP thread.
class StreamClient : public HttpBody
{
public:
    enum { LONGEST_STALL = 2000000 }; ///< microseconds

    /// @param after   the id of the last message that the client knows
    /// @param frames  of the link whose frames it wants; null: none
    StreamClient(std::shared_ptr<const StreamSources> sources, quint64 after,
                 std::shared_ptr<const FrameChannel> frames);

    qint64 read(char* to, size_t size) override;
    bool hasNews() const override;

    /// Whether the next thing to send is a full snapshot that it has not been given yet.
    bool wantsFull() const;
    void giveFull(const SharedMessage& full);

    /// What it has been told is no longer true: a full snapshot must come next.
    void fallBehind();

    /// Looks whether the client still takes what is sent. Called at each turn.
    void watch(qint64 now);

private:
    enum State { BEHIND, FOLLOWING };

    bool hasCurrent();
    bool isPlaceGone() const;
    SharedMessage nextMessage();
    SharedMessage nextBehind();
    SharedMessage nextFollowing() const;
    void letGo();

    const std::shared_ptr<const StreamSources> m_sources;
    const std::shared_ptr<const FrameChannel> m_frames;
    State m_state = BEHIND;
    quint64 m_place;          ///< the id of the last message begun
    SharedMessage m_full;     ///< given and not begun
    SharedMessage m_current;  ///< begun and not sent to its end
    qint64 m_sent = 0;        ///< bytes of m_current
    bool m_hasTaken = true;   ///< since the last watch()
    bool m_isStalled = false; ///< took nothing for LONGEST_STALL
    qint64 m_lastTaken = 0;   ///< when a watch() saw that it had, microseconds
};

#endif
