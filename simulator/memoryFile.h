#ifndef MEMORY_FILE_H
#define MEMORY_FILE_H

#include "plcStations.h"

#include <istream>
#include <stdexcept>
#include <string>

// The memory of the stations as text: a line "STATION AREA NUMBER VALUE" for each word or bit.
// NUMBER is as on the wire. The rest of a line behind # is a comment; empty lines mean nothing.
// Words and bits that are not named are 0.

/// The file cannot be used. what() names the file, and of a bad line its number and the reason.
class MemoryFileError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads the file and stores its values, all of them or none. Throws MemoryFileError.
void loadMemory(const std::string& path, PlcStations& stations);

/// The same from a stream.
/// @param name  of the file, for messages
void loadMemory(std::istream& in, const std::string& name, PlcStations& stations);

/// Every word that is not 0: QW, MW and IW.
std::string memoryText(const PlcStations& stations);

#endif
