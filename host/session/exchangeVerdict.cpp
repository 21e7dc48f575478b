#include "session/exchangeVerdict.h"

#include "exchange/frameShape.h"
#include "exchange/replyRecogniser.h"

namespace {

enum { STILL_WORKING = 5, BUSY = 6 };

} // namespace

bool isFinalRefusal(const QByteArray& reply)
{
    if (reply.size() != EXCEPTION_BYTES) return false;
    const int code = frameByte(reply, 2);
    return (frameByte(reply, 1) & EXCEPTION_BIT) != 0 && code != STILL_WORKING && code != BUSY;
}

JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) return JobEnd::DONE;
    return finished.exceptionCode != 0 ? JobEnd::REFUSED : JobEnd::TIMED_OUT;
}

QString troubleOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.exceptionCode != 0)
        return QString(QLatin1String("refused by the PLC: %1 (exception %2)"))
            .arg(QLatin1String(exceptionText(finished.exceptionCode)))
            .arg(finished.exceptionCode);
    const QString text = finished.heard ? QLatin1String("station %1 gave no usable answer")
                                        : QLatin1String("station %1 does not answer");
    return text.arg(finished.frame.var.station);
}
