#ifndef LINK_SINK_H
#define LINK_SINK_H

#include "session/frameRecord.h"
#include "session/sessionSink.h"

/// What a link's thread tells its owner: everything that its session tells, and what goes over the
/// link. Called from that thread only, between two frames: each call notes and returns, as a call
/// that waits delays the line. Times are LinkThread::now().
class LinkSink : public SessionSink
{
public:
    /// The link was opened, or is lost. A loss is told once, however often opening then fails.
    /// @param trouble  why a link is lost, one sentence
    virtual void linkChanged(bool connected, const QString& trouble, qint64 now) = 0;

    /// Bytes went out, or came in.
    virtual void frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now) = 0;

    /// The wire was in use, with the silence ahead of a frame. Never told of a network.
    virtual void wireTaken(qint64 from, qint64 until) = 0;
};

#endif
