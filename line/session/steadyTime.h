#ifndef STEADY_TIME_H
#define STEADY_TIME_H

#include <QtGlobal>

/// Microseconds of a clock that never goes back, and goes on while the process or the machine is
/// stopped. Any thread may call it.
qint64 steadyTime();

#endif
