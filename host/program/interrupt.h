#ifndef INTERRUPT_H
#define INTERRUPT_H

#include <QtGlobal>

// When the program is to end: after a signal, or at a set time.

/// Makes SIGINT (Ctrl-C), SIGTERM and SIGHUP request a stop instead of ending the program. SIGHUP
/// stays ignored when it was ignored before, as under nohup.
void stopOnSignals();

/// Whether a signal has requested a stop. Every thread may call it.
bool stopRequested();

/// Sets the time at which isToEnd() becomes true, in microseconds from now.
void endIn(qint64 time);

/// Whether a stop was requested or the time of endIn() is over. Only for the thread that calls
/// endIn().
bool isToEnd();

#endif
