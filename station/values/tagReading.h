#ifndef TAG_READING_H
#define TAG_READING_H

#include <QByteArray>
#include <QString>

/// How far a value can be trusted.
enum Quality {
    GOOD,  ///< an answer brought it within the tag's turn
    STALE, ///< no answer for three turns or 2 s, whichever is longer
    BAD    ///< the link is lost, the station is silent, the PLC refused it, or it was never read
};

/// "good", "stale" or "bad".
const char* qualityText(Quality quality);

/// What is known of a tag at one time. A value is never passed on without its quality and the time
/// of the answer that brought it.
struct TagReading
{
    QByteArray bytes; ///< of the last answer, as of intf_getData; empty: never read
    Quality quality = BAD;
    QString trouble;       ///< why the value is stale or bad, in words; empty when it is good
    qint64 time = 0;       ///< of the last answer with the value, ms since 1970; 0: never read
    qint64 changed = 0;    ///< when the value changed last, ms since 1970; 0: never read
    qint64 staleSince = 0; ///< when a stale value went stale, ms since 1970; 0: it is not stale
};

#endif
