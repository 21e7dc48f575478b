#ifndef LOG_POSITION_H
#define LOG_POSITION_H

#include "samples/sample.h"

#include <vector>

/// How far the history's file has come: all rows up to `number` of this run are committed, and the
/// last of them has `sequence`. Rows follow each other without a hole in both counts, so that
///     sequence of a row = sequence - (number - number of the row)
/// for each row that this run put into this file, which are those behind `firstNumber`.
struct LogPosition
{
    qint64 file =
        0; ///< identity of the file: another one when it was moved aside or deleted; 0: none
    qint64 sequence = 0;
    quint64 number = 0;
    quint64 firstNumber = 0;
    qint64 time = 0; ///< rows up to `number` were noted before it, ms since 1970
};

/// A row as it is read from the history's file.
struct LoggedRow
{
    qint64 sequence = 0;
    Sample sample; ///< a READING; its number is 0
};

/// The part of the history that MQTT reads.
class SampleLog
{
public:
    virtual ~SampleLog() = default;

    /// As of the last commit. Never waits.
    virtual LogPosition position() const = 0;

    /// At most `most` rows behind `sequence` and not behind `last`, in the order of their
    /// sequences. It may wait for the disk. A file that cannot be read tells nothing.
    virtual std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, int most) = 0;

    /// The sequence of the oldest row that is still there; rows before it were dropped. Some rows
    /// behind it may be gone, too. 0: there is none, or the file cannot be read.
    virtual qint64 oldestSequence() = 0;
};

#endif
