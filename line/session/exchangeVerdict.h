#ifndef EXCHANGE_VERDICT_H
#define EXCHANGE_VERDICT_H

#include "session/sessionSink.h"

// What an exchange that is over means for the job that it belongs to.

JobEnd::Outcome outcomeOf(const FINISHED_EXCHANGE& finished);

/// Why one that was not accepted failed, in words.
QString troubleOf(const FINISHED_EXCHANGE& finished);

#endif
