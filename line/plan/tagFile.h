#ifndef TAG_FILE_H
#define TAG_FILE_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"

#include <functional>
#include <stdexcept>
#include <vector>

/// The tag file cannot be used. what() has one line for each bad line of the file: its number and
/// what is wrong with it.
struct TagFileError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Reads tags from CSV text. The driver itself judges area and address.
///
///   name,station,area,address,type,comment
///   level,1,MW,100,float32:high,"tank 1, metres"
///
/// The first line names the columns, in any order; comment may be missing. Types: bool, int16,
/// uint16, int32, uint32, float32; the 32-bit ones take ":low" (default: the word at the lower
/// address is the low one) or ":high". Empty lines and lines that begin with # are skipped. Fields
/// may stand in double quotes, a double quote within is doubled (RFC 4180). UTF-8, CR LF or LF.
/// Names are unique; bool belongs to bit areas, the other types to word areas.
/// @throws TagFileError naming all bad lines at once
std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver);

/// Judges the text in one more column, `value`, of a good line.
/// @return what is wrong with it; empty: nothing
using ValueJudge = std::function<QString(const Tag& tag, const QString& value)>;

/// The same from CSV text with a column `value` besides.
std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver,
                          const ValueJudge& judge);

/// CSV text that was read with a judge, with other texts in its column `value`; comment lines, the
/// order of the columns, quotes and blanks stay as they are.
/// @param values  by tag, texts that need no quotes
QByteArray withValues(const QByteArray& csv, const QStringList& values);

/// The bytes of a file.
/// @throws TagFileError when it cannot be read
QByteArray fileBytes(const QString& fileName);

/// The same from a file.
/// @throws TagFileError also when the file cannot be read
std::vector<Tag> readTagFile(const QString& fileName, const DriverLibrary& driver);

/// A tag from text such as "MW100", "MX12.3" or "2:QW8" (station 2); words are uint16.
/// @throws TagFileError when it is no valid address
Tag tagFromAddress(const QString& text, const DriverLibrary& driver);

#endif
