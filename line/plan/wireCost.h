#ifndef WIRE_COST_H
#define WIRE_COST_H

#include <QtGlobal>

class LineTiming;

/// The time of reading on a link, in microseconds.
struct WireCost
{
    qint64 request = 0; ///< a request and its reply without data words: their bytes, both silent
                        ///< intervals, and the time before the station begins its answer
    qint64 word = 0;    ///< a word of data
};

/// The cost on a line, exact to half a microsecond a word. On a network a request costs only the
/// turnaround, and a word costs nothing.
/// @param turnaround  microseconds before the station begins its answer
WireCost wireCost(const LineTiming& timing, qint64 turnaround);

#endif
