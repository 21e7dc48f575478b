#ifndef PROCESS_FIGURES_H
#define PROCESS_FIGURES_H

#include <sys/types.h>

#include <string>

// What the system tells of a process.

/// Descriptors that this process holds.
int openDescriptors();

/// A line of /proc/PID/status that is in kB, such as "VmRSS" or "VmHWM"; -1: there is none.
long kilobytes(pid_t process, const std::string& key);

/// Seconds of a core that the busiest thread but the first has taken so far.
double busiestThreadSeconds(pid_t process);

#endif
