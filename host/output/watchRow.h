#ifndef WATCH_ROW_H
#define WATCH_ROW_H

#include <QString>

/// One tag as a watch shows it.
struct WatchRow
{
    QString name;
    QString address;   ///< with its area, "MW100"; with its station when that is not 1, "2:MW100"
    QString value;     ///< empty: never read
    qint64 ageMs = -1; ///< since the value was last read from the PLC; -1: never
    qint64 changes = 0;
    bool good = false;
    QString trouble; ///< why it is not good, in words
};

#endif
