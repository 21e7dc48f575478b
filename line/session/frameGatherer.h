#ifndef FRAME_GATHERER_H
#define FRAME_GATHERER_H

#include "session/frameRecord.h"

#include <vector>

/// A frame, or stray bytes, assembled from the records of a link.
struct GatheredFrame
{
    enum Kind {
        REQUEST, ///< sent by the host for the driver
        FENCE,   ///< sent by the host itself, see FrameRecord::SENT_FENCE
        ANSWER,  ///< the recognised reply to the request; may be an exception reply
        STRAY    ///< received bytes that answer no request
    };

    Kind kind = REQUEST;
    qint64 time = 0; ///< time of the record with the first byte
    QByteArray bytes;
    QByteArray request; ///< the last request sent so far; of a request: itself; empty: none known
};

inline bool isSent(const GatheredFrame& frame)
{
    return frame.kind == GatheredFrame::REQUEST || frame.kind == GatheredFrame::FENCE;
}

/// Assembles frames from records, in the order of the line.
///
/// A sent record is a whole request. Received bytes are held until they contain the expected
/// answer, until the next request, or until flush(). Stray bytes before and behind the answer
/// become frames of their own. At most 1024 received bytes are held.
class FrameGatherer
{
public:
    /// @return the frames that this record completes; often none
    std::vector<GatheredFrame> add(const FrameRecord& record);

    /// Returns the bytes still held. Later bytes start a new frame.
    std::vector<GatheredFrame> flush();

    /// Call it where records are missing. Returns the bytes still held, and forgets the request:
    /// later bytes may answer a request that is missing.
    std::vector<GatheredFrame> flushAtHole();

private:
    void takeAnswer(std::vector<GatheredFrame>& frames);
    GatheredFrame takeFirst(int bytes, GatheredFrame::Kind kind);

    QByteArray m_request;
    int m_replyDue = 0; ///< 0: no answer is expected
    QByteArray m_received;
    std::vector<qint64> m_times; ///< of m_received, by byte
};

#endif
