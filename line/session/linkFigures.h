#ifndef LINK_FIGURES_H
#define LINK_FIGURES_H

#include <QtGlobal>

/// Rates of a link over a period.
struct LinkRates
{
    double exchangesPerSecond = 0; ///< exchanges given up without an answer do not count
    qint64 replyMedian = -1; ///< microseconds from the request's end to the reply's end; -1: no
                             ///< reply came
    qint64 reply99 = -1;     ///< 99th percentile of the same time; -1: no reply came
    double wireShare = -1;   ///< share of the period in which bytes or silent intervals took the
                             ///< wire, 0 to 1; -1: the link has no wire of its own
};

/// The link's figures: its rates, and its totals since the run began.
struct LinkFigures
{
    LinkRates wholeRun;
    LinkRates lately; ///< of the last ten seconds
    qint64 exchanges = 0;
    qint64 retries = 0;
    qint64 giveUps = 0;
    qint64 refusals = 0; ///< exception replies
    qint64 fences = 0;   ///< reads by the host itself, which show that no late reply follows
    qint64 losses = 0;   ///< losses of the link
    bool connected = false;
};

#endif
