#ifndef TAG_TEXT_H
#define TAG_TEXT_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"

// The texts of a tag's station, type, area, address, access and deadband: reads each text, and says
// in words what is wrong with it. The functions with "Problem" in their name return a sentence.

/// Sets the tag's station from a text such as "2".
/// @return false when the text is no station number from 1 to 247
bool takeStation(const QString& text, Tag& tag);
QString stationProblem(const QString& text);

/// Sets the tag's type, word order and format from a text such as "float32:high", "uint32:hex" or
/// "hex", which is "uint16:hex".
/// @return false when the text is no type
bool takeType(const QString& text, Tag& tag);
QString typeProblem(const QString& text);

/// The text of the tag's type for a tag file, such as "float32:high" or "hex".
QString tagTypeText(const Tag& tag);

/// The text of the tag's type as in tagTypeText(), but a 32-bit type always has its word order:
/// "float32:low".
QString typeTextWithOrder(const Tag& tag);

/// Sets the tag's area from a text such as "MW", "mw" or "%mw".
/// @return false when the driver knows no such area; the tag then has the text for its area
bool takeArea(const QString& text, Tag& tag, const DriverLibrary& driver);

/// Checks the tag's address in its known area, and sets the tag's number and its address in normal
/// form.
/// @return the problem; empty when the address is valid
QString addressProblem(Tag& tag, const DriverLibrary& driver);

/// Why the tag's type does not fit its known area; empty: it fits.
QString kindProblem(const Tag& tag);

/// Why a tag with a valid address cannot be written; empty when it can.
QString writeProblem(const Tag& tag, const DriverLibrary& driver);

/// Sets the tag's access from "rw", or from "ro" or an empty text.
/// @return false when the text is no access
bool takeAccess(const QString& text, Tag& tag);
QString accessProblem(const QString& text);

/// Sets the tag's deadband from a number with a decimal point; empty: 0.
/// @return false when the text is no finite number of 0 or more
bool takeDeadband(const QString& text, Tag& tag);
QString deadbandProblem(const QString& text);

QString quoted(const QString& text);

#endif
