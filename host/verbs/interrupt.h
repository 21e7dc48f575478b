#ifndef INTERRUPT_H
#define INTERRUPT_H

/// From now on Ctrl-C and SIGTERM only ask to stop, and a reader that went away only makes writing
/// fail.
void stopOnSignals();

bool stopRequested();

#endif
