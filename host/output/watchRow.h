#ifndef WATCH_ROW_H
#define WATCH_ROW_H

#include <QString>

/// The row of a tag in a watch.
struct WatchRow
{
    QString name;
    QString address;    ///< with the area, "MW100"; "2:MW100" when the station is not 1
    QString label;      ///< name and address in a sentence, "level (MW100)"
    int valueWidth = 0; ///< columns of the longest value that the type has; 0: of a decimal number
    QString value;      ///< empty: never read
    qint64 ageMs = -1;  ///< time since the last read from the PLC; -1: never read
    qint64 changes = 0;
    qint64 changedAt = -1; ///< time of the last change, microseconds; -1: no change yet
    bool good = false;
    QString trouble;      ///< the reason when the tag is not good, in words
    QString writeProblem; ///< why the tag cannot be written, in words; empty when it can
};

#endif
