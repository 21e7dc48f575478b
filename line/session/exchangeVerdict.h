#ifndef EXCHANGE_VERDICT_H
#define EXCHANGE_VERDICT_H

#include "session/sessionSink.h"

// The result of a finished exchange for its job. A write has verdicts of its own: its user must
// know whether the PLC can have executed it.
//
//   went out | end                                 | outcome   | execution
//   never    | no answer                           | TIMED_OUT | NOT_SENT
//   once     | no answer                           | TIMED_OUT | MAYBE_EXECUTED
//   once     | refused                             | REFUSED   | ANSWERED, see leavesOpen()
//   often    | refused, an earlier one not refused | TIMED_OUT | MAYBE_EXECUTED

/// The outcome of a read: DONE, REFUSED or TIMED_OUT.
JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished);

/// The reason of a failed read, in words. Only for outcomes other than DONE.
QString troubleOf(const FINISHED_EXCHANGE& finished);

/// The trouble of a station without an answer.
/// @param unfit  what came in place of the answer, in words; empty: nothing
QString noAnswerOf(int station, const QString& unfit = QString());

// The functions below give an end without its job, and without the place in its trouble.

/// The end of a write, or of a block of a download.
JobEnd writeEndOf(const FINISHED_EXCHANGE& finished);

/// The end of a write that never went out, because its station is silent.
JobEnd unsentToSilent(int station);

/// The end of a write that had not gone out when a newer write of the same place took its turn.
JobEnd replacedWriteEnd();

/// The end of a write that is dropped before its time.
/// @param timesSent  times that its frame went out
/// @param why        in words
JobEnd droppedWriteEnd(int timesSent, const QString& why);

#endif
