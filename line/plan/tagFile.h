#ifndef TAG_FILE_H
#define TAG_FILE_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"
#include "plan/tagError.h"

#include <functional>
#include <vector>

/// Reads tags from CSV text. The driver checks area and address.
///
///   name,station,area,address,type,rate,access,deadband,comment
///   level,1,MW,100,float32:high,500ms,rw,0.5,"tank 1, metres"
///
/// - The first line names the columns, in any order. The columns comment, rate, access and deadband
///   may be missing.
/// - Types: bool, int16, uint16, int32, uint32, float32. The word order of a 32-bit type is ":low"
///   (default: the low word has the lower address) or ":high". The unsigned types show their values
///   in hexadecimal or binary with ":hex" or ":bin" at the end; "hex" and "bin" alone are words.
/// - Rates: see takeRate(). Access: "rw", or "ro" and empty; a tag with "rw" must be writable.
/// - Deadbands: numbers of 0 or more; empty: 0.
/// - An area may be in lower case or begin with %.
/// - bool needs a bit area, the other types need a word area. Names are unique.
/// - A field may have double quotes around it; a double quote inside is doubled (RFC 4180).
/// - Empty lines and lines that begin with # are skipped. UTF-8, CR LF or LF.
/// - When the first line has semicolons and no commas, semicolons separate the fields. A float in
///   the columns value and deadband may then have a decimal comma.
/// @throws TagFileError with all bad lines
std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver);

/// Checks the text in the further column `value` of a good line.
/// @return the problem in words; empty: none
using ValueJudge = std::function<QString(const Tag& tag, const QString& value)>;

/// Reads tags from CSV text with the further column `value`.
std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver,
                          const ValueJudge& judge);

/// Replaces the texts in the column `value` of CSV text that readTags() has accepted. Comment
/// lines, the order of the columns, the separator, other quotes and blanks are kept. Between
/// semicolons the values get decimal commas, unless the column has decimal points and no commas.
/// @param values  by tag, with decimal points; texts that need no quotes
QByteArray withValues(const QByteArray& csv, QStringList values);

/// The error with the file's name ahead of each line.
TagFileError errorInFile(const QString& fileName, const TagFileError& error);

/// The bytes of a file.
/// @throws TagFileError when it cannot be read
QByteArray fileBytes(const QString& fileName);

/// Reads tags from a file, see readTags().
/// @throws TagFileError also when the file cannot be read
std::vector<Tag> readTagFile(const QString& fileName, const DriverLibrary& driver);

#endif
