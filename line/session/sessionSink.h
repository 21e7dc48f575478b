#ifndef SESSION_SINK_H
#define SESSION_SINK_H

#include "session/driverExchange.h"

#include <QByteArray>
#include <QString>

#include <vector>

/// The end of a user's job. Every job ends once.
struct JobEnd
{
    enum Outcome {
        DONE,
        REFUSED,   ///< the PLC answered with an exception
        TIMED_OUT, ///< no usable answer came
        LOST       ///< the link was lost, the host stopped, a newer write replaced this write, or
                   ///< the driver kept no record of the recipe
    };

    int job = 0;
    Outcome outcome = DONE;
    QString trouble;   ///< the first failure and its reason; empty with DONE
    QByteArray values; ///< of a recipe, in the layout of the driver's recipe buffer
};

/// Receives the news of DriverFeeder. It is called from the thread that calls DriverFeeder, which
/// is the link's thread. Each function must note its news and return: a call that waits delays the
/// line. Tags are indices into the tags of DriverFeeder::poll() or know(). Times are microseconds.
class SessionSink
{
public:
    virtual ~SessionSink() = default;

    /// The tag was read from the PLC.
    /// @param bytes  in the format of intf_getData: two bytes a word, low byte first, or one a bit
    virtual void tagRead(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The tag's value changed: by a read, by a write of the host, or back to the old value after a
    /// failed write.
    virtual void tagValue(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The tags could not be read.
    /// @param trouble  the reason, one sentence
    virtual void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) = 0;

    virtual void jobEnded(const JobEnd& end) = 0;

    /// A recipe transfer has transferred `done` of its blocks.
    virtual void recipeProgress(int job, int done) = 0;

    /// An attempt of a request has ended. With the result REPLY_RETRY another attempt follows.
    virtual void exchanged(const FINISHED_EXCHANGE& finished, qint64 now) = 0;

    /// A fence has ended, with or without an answer.
    virtual void fenced(const EndedExchange& fence, qint64 now) = 0;

    /// The link returns the sent bytes. Told once.
    virtual void echoFound() = 0;
};

#endif
