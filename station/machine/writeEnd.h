#ifndef WRITE_END_H
#define WRITE_END_H

#include "values/jsonText.h"
#include "values/tagReading.h"

#include <QString>

#include <functional>

/// The one outcome of a write.
struct WriteEnd
{
    enum Outcome {
        CONFIRMED,
        REFUSED, ///< the PLC said no, and no attempt was left unanswered
        FAILED   ///< no answer; the reason says whether the PLC may have executed it
    };
    enum { OUTCOMES = FAILED + 1 };

    quint64 id = 0; ///< of the write, in the whole station
    Outcome outcome = FAILED;
    QString reason;  ///< in words; empty when confirmed
    TagReading held; ///< what the tag holds now
};

/// "confirmed", "refused" or "failed".
const char* writeOutcomeText(WriteEnd::Outcome outcome);

/// Puts the keys "outcome" and "reason" into the object; the reason of a confirmed write is null.
void writeOutcome(JsonText& json, WriteEnd::Outcome outcome, const QString& reason);

/// Called once, from any thread: it must note the end and return.
using WriteEnded = std::function<void(const WriteEnd&)>;

#endif
