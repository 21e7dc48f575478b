#ifndef SAMPLE_H
#define SAMPLE_H

#include "values/tagReading.h"

#include <QString>

/// One piece of news for programs outside: a reading that became a row of the history, or a station
/// that fell silent or answers again. Samples are taken in the order in which they happened on a
/// link.
struct Sample
{
    enum Kind {
        READING,  ///< a tag has this value and quality since `time`
        STANDING, ///< a station of a link answers or not since `time`
        GAP       ///< readings found no room; those up to `number` are in the history alone
    };

    Kind kind = READING;
    QString link;
    qint64 time = 0; ///< ms since 1970

    // READING
    QString tag;
    double value = 0; ///< exact for every type of a tag; may be nan, inf and -inf
    bool hasValue = false;
    Quality quality = BAD;

    /// Counts the rows of this run from 1, without a hole; 0: the row is not kept. Grows from
    /// sample to sample. History::position() tells where such a row lies in the file.
    quint64 number = 0;

    // STANDING
    int station = 0;
    bool answers = false;
};

#endif
