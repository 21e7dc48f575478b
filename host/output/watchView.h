#ifndef WATCH_VIEW_H
#define WATCH_VIEW_H

#include <QString>

#include <vector>

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

/// How a link does over some time.
struct LinkRates
{
    double exchangesPerSecond = 0; ///< those given up without an answer do not count
    qint64 replyMedian = -1; ///< microseconds from the request's end to the reply's; -1: none came
    qint64 reply99 = -1;     ///< 99 % came within
    double wireShare = -1;   ///< of the time in which bytes or silent intervals took the wire, 0 to
                             ///< 1; -1: the link has no wire of its own
};

/// The link's figures: its rates, and its totals since the watch began.
struct LinkFigures
{
    LinkRates wholeRun;
    LinkRates lately; ///< in the last ten seconds
    qint64 exchanges = 0;
    qint64 retries = 0;
    qint64 giveUps = 0;
    qint64 refusals = 0; ///< exception replies
    qint64 fences = 0;   ///< reads of the host's own, which bring the link into step
    qint64 losses = 0;   ///< of the link
    bool connected = false;
};

#endif
