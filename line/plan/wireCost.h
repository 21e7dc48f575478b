#ifndef WIRE_COST_H
#define WIRE_COST_H

#include <QtGlobal>

class LineTiming;

/// What reading costs on one link, in microseconds.
struct WireCost
{
    qint64 request = 0; ///< one request and the reply around its data: their bytes, both silent
                        ///< intervals and the time that the station takes to begin its answer
    qint64 word = 0;    ///< each word of data
};

/// The cost on a line, exact to half a microsecond a word. A network's line takes no time at all:
/// there a request costs the turnaround alone, and a word nothing.
/// @param turnaround  microseconds that the station takes to begin its answer
WireCost wireCost(const LineTiming& timing, qint64 turnaround);

#endif
