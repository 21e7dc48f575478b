#ifndef READ_RATE_H
#define READ_RATE_H

#include <QString>

/// How often a tag or a block of tags is read.
struct ReadRate
{
    enum Kind {
        EVERY_CYCLE, ///< "fast": in every cycle
        INTERVAL,    ///< "500ms": after an interval of its own
        ONCE         ///< "once": on each new connection, until the station has answered
    };

    Kind kind = EVERY_CYCLE;
    qint64 intervalMs = 0; ///< of INTERVAL, 1 or more: from the start of a read to the next start

    bool operator==(const ReadRate& other) const
    {
        return kind == other.kind && intervalMs == other.intervalMs;
    }
};

/// Sets the rate from the text of a tag file's column: "fast" or empty, a duration, or "once".
/// @return false when the text is no rate
bool takeRate(const QString& text, ReadRate& rate);
QString rateProblem(const QString& text);

/// The text of a rate for a tag file.
QString rateText(const ReadRate& rate);

#endif
