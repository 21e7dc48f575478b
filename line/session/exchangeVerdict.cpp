#include "session/exchangeVerdict.h"

#include "wire/exceptionText.h"

JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) return JobEnd::DONE;
    return finished.end == END_REFUSED ? JobEnd::REFUSED : JobEnd::TIMED_OUT;
}

QString troubleOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.end == END_REFUSED)
        return QString(QLatin1String("refused by the PLC: %1 (exception %2)"))
            .arg(QLatin1String(exceptionText(finished.exceptionCode)))
            .arg(finished.exceptionCode);
    const QString text = finished.end == END_UNUSABLE
                             ? QLatin1String("station %1 gave no usable answer")
                             : QLatin1String("station %1 does not answer");
    return text.arg(finished.frame.var.station);
}
