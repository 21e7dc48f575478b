#ifndef LINK_FIGURES_H
#define LINK_FIGURES_H

#include <QtGlobal>

/// How a link does over some time.
struct LinkRates
{
    double exchangesPerSecond = 0; ///< exchanges given up without an answer do not count
    qint64 replyMedian = -1; ///< microseconds from the request's end to the reply's; -1: none came
    qint64 reply99 = -1;     ///< 99 % came within
    double wireShare = -1;   ///< of the time in which bytes or silent intervals took the wire, 0 to
                             ///< 1; -1: the link has no wire of its own
};

/// The link's figures: its rates, and its totals since the run began.
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
