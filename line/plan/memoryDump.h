#ifndef MEMORY_DUMP_H
#define MEMORY_DUMP_H

#include "plan/tagFile.h"

#include <map>
#include <tuple>
#include <vector>

/// The words of a PLC's memory, as the simulated PLC writes and loads them. The text has a line for
/// each word that is not 0:
///
///     # read 1 MW 3000 3031
///     1 MW 3050 7
///
/// that is station, area (MW, IW or QW), address number and value, 0 to 65535. Empty lines are
/// skipped, and lines that begin with # are comments. A comment "# read STATION AREA FIRST LAST"
/// names words that were read: a word among them that has no line of its own is 0. Without such
/// comments a dump tells nothing of the words that have no line.
struct MemoryDump
{
    struct Words
    {
        int station;
        QString area;
        int first; ///< address number
        int last;  ///< address number; FIRST or more
    };
    using Place = std::tuple<int, QString, int>; ///< station, area, address number

    std::vector<Words> read;    ///< the words that were read
    std::map<Place, int> words; ///< values, 0 to 65535
};

/// Whether the text is a dump and no table of tags: its first line that is neither empty nor a
/// comment begins with a digit, or all its lines are comments and one of them begins with "# read
/// ".
bool isMemoryDump(const QByteArray& text);

/// Reads the text of a dump.
/// @param fileName  for the messages
/// @throws TagFileError with all bad lines
MemoryDump readMemoryDump(const QByteArray& text, const QString& fileName);

/// The text of a dump; words that are 0 have no line.
QByteArray memoryDumpText(const MemoryDump& dump);

#endif
