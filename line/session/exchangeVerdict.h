#ifndef EXCHANGE_VERDICT_H
#define EXCHANGE_VERDICT_H

#include "session/sessionSink.h"

// The result of a finished exchange for its job.

/// The outcome of the job: DONE, REFUSED or TIMED_OUT.
JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished);

/// The reason of a failed exchange, in words. Only for outcomes other than DONE.
QString troubleOf(const FINISHED_EXCHANGE& finished);

#endif
