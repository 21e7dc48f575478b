#include "session/exchangeVerdict.h"

#include "wire/exceptionText.h"

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString notSent(const QString& reason)
{
    return text("not sent: ") + reason;
}

QString maybeExecuted(const QString& reason)
{
    return reason + text("; the PLC may have executed it");
}

QString exceptionOf(const FINISHED_EXCHANGE& finished)
{
    return text("%1 (exception %2)")
        .arg(text(exceptionText(finished.exceptionCode)))
        .arg(finished.exceptionCode);
}

/// Bytes came that are no answer. Otherwise the station was silent, even when it had answered a
/// fence ahead of the request.
bool hasUnfitBytes(const FINISHED_EXCHANGE& finished)
{
    return finished.end == END_UNUSABLE && !finished.unfit.isEmpty();
}

/// Of a write whose frame never went out: only its fences did, or the station was known to be
/// silent.
QString reasonOfUnsent(const FINISHED_EXCHANGE& finished)
{
    if (hasUnfitBytes(finished)) return notSent(troubleOf(finished));
    if (finished.frame.sendLen == 0) return notSent(text("it does not fit into a frame"));
    return unsentToSilent(finished.frame.var.station).reason;
}

QString reasonOfRefused(const FINISHED_EXCHANGE& finished)
{
    if (finished.openBefore > 0)
        return text("the PLC may have executed an earlier attempt; the last attempt: ") +
               exceptionOf(finished);
    const QString refused = troubleOf(finished);
    return leavesOpen(finished.exceptionCode) ? maybeExecuted(refused) : refused;
}

QString writeReasonOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.timesSent == 0) return reasonOfUnsent(finished);
    if (finished.end == END_REFUSED) return reasonOfRefused(finished);
    if (hasUnfitBytes(finished)) return maybeExecuted(troubleOf(finished));
    return maybeExecuted(text("station %1 did not answer").arg(finished.frame.var.station));
}

JobEnd::Execution executionOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) return JobEnd::ANSWERED;
    if (finished.timesSent == 0) return JobEnd::NOT_SENT;
    const bool isSure = finished.end == END_REFUSED && finished.openBefore == 0 &&
                        !leavesOpen(finished.exceptionCode);
    return isSure ? JobEnd::ANSWERED : JobEnd::MAYBE_EXECUTED;
}

} // namespace

JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.result == REPLY_ACCEPTED) return JobEnd::DONE;
    return finished.end == END_REFUSED ? JobEnd::REFUSED : JobEnd::TIMED_OUT;
}

QString troubleOf(const FINISHED_EXCHANGE& finished)
{
    if (finished.end == END_REFUSED) return text("refused by the PLC: ") + exceptionOf(finished);
    const int station = finished.frame.var.station;
    return hasUnfitBytes(finished) ? noAnswerOf(station, finished.unfit) : noAnswerOf(station);
}

QString noAnswerOf(int station, const QString& unfit)
{
    if (unfit.isEmpty()) return text("station %1 does not answer").arg(station);
    return text("station %1 gave no usable answer: %2").arg(station).arg(unfit);
}

JobEnd writeEndOf(const FINISHED_EXCHANGE& finished)
{
    JobEnd end;
    end.outcome = outcomeOf(finished);
    end.execution = executionOf(finished);
    if (end.outcome == JobEnd::DONE) return end;
    if (finished.openBefore > 0) end.outcome = JobEnd::TIMED_OUT;
    end.reason = writeReasonOf(finished);
    return end;
}

JobEnd unsentToSilent(int station)
{
    JobEnd end;
    end.outcome = JobEnd::TIMED_OUT;
    end.execution = JobEnd::NOT_SENT;
    end.reason = notSent(text("station %1 is silent").arg(station));
    return end;
}

JobEnd replacedWriteEnd()
{
    JobEnd end;
    end.outcome = JobEnd::LOST;
    end.execution = JobEnd::NOT_SENT;
    end.reason = text("replaced by a newer write, not sent");
    return end;
}

JobEnd droppedWriteEnd(int timesSent, const QString& why)
{
    JobEnd end;
    end.outcome = JobEnd::LOST;
    end.execution = timesSent > 0 ? JobEnd::MAYBE_EXECUTED : JobEnd::NOT_SENT;
    end.reason = timesSent > 0 ? maybeExecuted(why) : notSent(why);
    return end;
}
