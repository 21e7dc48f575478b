#ifndef TERMINAL_HOLDER_H
#define TERMINAL_HOLDER_H

#include <string>

/// The process that made a pseudo-terminal: "kakb-sim, process 4711". Empty when it cannot be
/// known, because the path is no pseudo-terminal or the process belongs to another user.
/// @param path  /dev/pts/N
std::string terminalHolder(const std::string& path);

#endif
