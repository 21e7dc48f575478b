#ifndef WIRE_COST_H
#define WIRE_COST_H

#include <QtGlobal>

/// What reading costs on one link, in microseconds.
struct WireCost
{
    qint64 request = 0; ///< one request and the reply around its data: their bytes, both silent
                        ///< intervals and the time that the station takes to begin its answer
    qint64 word = 0;    ///< each word of data
};

#endif
