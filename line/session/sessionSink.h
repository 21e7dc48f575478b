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
        TIMED_OUT, ///< no usable answer came, or an earlier attempt of a refused write had none
        LOST       ///< the link was lost, the host stopped, a newer write replaced this write, or
                   ///< the driver kept no record of the recipe
    };

    /// Whether the PLC can have executed the write that `trouble` names. Of a download, the block
    /// that `trouble` names: the blocks before it are written, the blocks behind it are not.
    enum Execution {
        NOT_SENT,       ///< no frame with it went out: it is not executed
        MAYBE_EXECUTED, ///< a frame with it went out, and nothing says what became of it
        ANSWERED        ///< the PLC confirmed it, or refused it without executing it
    };

    int job = 0;
    Outcome outcome = DONE;
    Execution execution = ANSWERED; ///< of a write or download; no meaning for a read
    QString trouble; ///< the first failure: its label or addresses, and the reason; empty with DONE
    QString reason;  ///< of a write or recipe: the reason without the addresses
    QString block;   ///< of a recipe or read: the addresses of the first failure; empty: it is not
                     ///< known, or nothing failed
    QByteArray values; ///< of a recipe, in the layout of the driver's recipe buffer; of a read, the
                       ///< values of its blocks in their order, in the format of intf_getData
};

/// Receives the news of DriverFeeder. It is called from the thread that calls DriverFeeder, which
/// is the link's thread. Each function must note its news and return: a call that waits delays the
/// line. Tags are indices into the tags of DriverFeeder::poll() or know(). Times are microseconds.
class SessionSink
{
public:
    virtual ~SessionSink() = default;

    /// The PLC has told the tag's value: by the answer to a read, or by the echo of a write that
    /// holds the tag as a whole. It is never a value that is still to be written. Told ahead of the
    /// end of the job that wrote it.
    /// @param bytes  in the format of intf_getData: two bytes a word, low byte first, or one a bit;
    ///               valid for this call, copy them
    /// @param asOf   the time of the answer, or an earlier time when the answer came too late: the
    ///               value is as old as this, or younger
    virtual void tagRead(int tag, const QByteArray& bytes, qint64 asOf) = 0;

    /// The tag was read from the PLC.
    /// @param bytes  as the driver's cache shows the tag: a value to be written hides the PLC's
    ///               until the write has ended
    virtual void tagShown(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The value that the driver's cache shows changed: by a read, by a write of the host, or back
    /// to the old value after a failed write.
    virtual void tagValue(int tag, const QByteArray& bytes, qint64 now) = 0;

    /// The tags cannot be read: the PLC refused them, their station is silent, or the link is lost.
    /// @param trouble  the reason, one sentence
    virtual void tagsBad(const std::vector<int>& tags, const QString& trouble, qint64 now) = 0;

    /// The read of the tags was given up. Their station does not count as silent.
    /// @param trouble  the reason, one sentence
    virtual void tagsUnanswered(const std::vector<int>& tags, const QString& trouble,
                                qint64 now) = 0;

    /// A polled station answers, or counts as silent from now on. It counts as neither before its
    /// first answer on a connection.
    /// @param trouble  the reason of the silence, one sentence; empty when it answers
    virtual void stationChanged(int station, bool answers, const QString& trouble, qint64 now) = 0;

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
