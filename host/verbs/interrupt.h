#ifndef INTERRUPT_H
#define INTERRUPT_H

/// From now on Ctrl-C and SIGTERM only ask to stop.
void stopOnSignals();

bool stopRequested();

#endif
