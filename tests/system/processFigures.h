#ifndef PROCESS_FIGURES_H
#define PROCESS_FIGURES_H

#include <sys/types.h>

#include <string>

// The system's figures of a process.

/// Number of open descriptors of this process.
int openDescriptors();

/// A figure in kB from /proc/PID/status, such as "VmRSS" or "VmHWM"; -1: no such figure.
long kilobytes(pid_t process, const std::string& key);

/// Processor time in seconds of the busiest thread, without the first thread.
double busiestThreadSeconds(pid_t process);

#endif
