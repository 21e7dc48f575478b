#ifndef INTERRUPT_H
#define INTERRUPT_H

#include <QtGlobal>

/// From now on Ctrl-C, SIGTERM and SIGHUP only ask to stop, SIGHUP not where it was ignored.
void stopOnSignals();

/// From any thread.
bool stopRequested();

/// The verb will be over by then; microseconds from now.
void endIn(qint64 time);

/// It was asked to stop, or its time is over. Only from the thread that calls endIn().
bool isToEnd();

#endif
