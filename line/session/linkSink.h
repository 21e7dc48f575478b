#ifndef LINK_SINK_H
#define LINK_SINK_H

#include "session/frameRecord.h"
#include "session/sessionSink.h"

/// Receives the news of a link's thread: everything that DriverFeeder tells, the state of the link,
/// and the bytes on it. Only the link's thread calls it, between two frames. Each function must
/// note its news and return: a call that waits delays the line. Times are LinkThread::now().
class LinkSink : public SessionSink
{
public:
    /// The link was opened, or is lost. A loss is told once; failed openings after it are not told.
    /// @param trouble  the reason of the loss in one sentence; empty when connected
    virtual void linkChanged(bool connected, const QString& trouble, qint64 now) = 0;

    /// Bytes came. Told ahead of all news that these bytes bring.
    /// @param after  they came after this time: the thread then found none of them on the link.
    ///               It is shortly before `now`, unless the process was stopped: bytes may have
    ///               lain in the system for all that time
    virtual void bytesCame(qint64 after, qint64 now) = 0;

    /// Bytes were sent or received.
    virtual void frame(FrameRecord::Direction direction, const QByteArray& bytes, qint64 now) = 0;

    /// The wire was in use for a frame and the silence ahead of it. A network never tells it.
    virtual void wireTaken(qint64 from, qint64 until) = 0;
};

#endif
