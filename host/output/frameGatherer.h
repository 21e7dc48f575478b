#ifndef FRAME_GATHERER_H
#define FRAME_GATHERER_H

#include "session/frameRecord.h"

#include <vector>

/// One frame, or stray bytes, put together from what went over the link.
struct GatheredFrame
{
    enum Kind {
        REQUEST, ///< sent by the host
        FENCE,   ///< the same, to bring the link into step
        ANSWER,  ///< the recognised reply to the request, an exception as well
        STRAY    ///< received bytes that answer nothing
    };

    Kind kind = REQUEST;
    qint64 time = 0; ///< of the record that brought the first byte
    QByteArray bytes;
    QByteArray request; ///< the last one sent by then; itself for a request; empty: none yet
};

inline bool isSent(const GatheredFrame& frame)
{
    return frame.kind == GatheredFrame::REQUEST || frame.kind == GatheredFrame::FENCE;
}

/// Puts the pieces in which bytes arrive together to frames, in the order of the line. A sent
/// record is a whole request. Received bytes are held until they make the answer that is due, until
/// the next request, or until flush(); stray bytes come out on their own, before and behind the
/// answer. Of endless chatter it holds 1024 bytes at most.
class FrameGatherer
{
public:
    /// @return the frames that are complete by now, often none
    std::vector<GatheredFrame> add(const FrameRecord& record);

    /// Gives out what is still held. What comes behind it is not joined to it.
    std::vector<GatheredFrame> flush();

    /// The same ahead of a hole in the records: what comes behind it answers no request known.
    std::vector<GatheredFrame> flushAtHole();

private:
    void takeAnswer(std::vector<GatheredFrame>& frames);
    GatheredFrame takeFirst(int bytes, GatheredFrame::Kind kind);

    QByteArray m_request;
    int m_replyDue = 0; ///< 0: no answer is to come, or it came
    QByteArray m_received;
    std::vector<qint64> m_times; ///< of each received byte
};

#endif
