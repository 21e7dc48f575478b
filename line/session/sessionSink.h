#ifndef SESSION_SINK_H
#define SESSION_SINK_H

#include "session/driverExchange.h"

#include <QByteArray>
#include <QString>

#include <vector>

/// How a job that the user's side handed in ended. Every job ends once.
struct JobEnd
{
    enum Outcome {
        DONE,
        REFUSED,   ///< the PLC answered with an exception
        TIMED_OUT, ///< no answer that could be used
        LOST       ///< the link failed, or the host stopped
    };

    int job = 0;
    Outcome outcome = DONE;
    QString trouble;   ///< unless DONE: what failed first, and why
    QByteArray values; ///< of a recipe: its values as the driver's buffer holds them
};

/// What a session tells its host. Called from the link's thread, so each call only notes.
class SessionSink
{
public:
    virtual ~SessionSink() = default;

    /// The tag was read from the PLC just now.
    /// @param bytes  as intf_getData gives them
    virtual void tagRead(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The tag shows another value than the one told last: read, or written by the host, or fallen
    /// back after a failed write.
    virtual void tagValue(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The tags could not be read.
    virtual void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) = 0;

    virtual void jobEnded(const JobEnd& end) = 0;

    /// A recipe transfer has carried so many of its blocks.
    virtual void recipeProgress(int job, int done) = 0;

    /// An exchange is over, or failed and is tried again.
    virtual void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) = 0;

    /// A fence was answered, or not.
    virtual void fenced(const EndedExchange& fence, qint64 now) = 0;

    /// The link returns what is sent. Told once.
    virtual void echoFound() = 0;
};

#endif
