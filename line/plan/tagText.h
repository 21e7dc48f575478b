#ifndef TAG_TEXT_H
#define TAG_TEXT_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"

// The texts of a tag's station, type, area and address: reads each text, and says in words what is
// wrong with it. The functions with "Problem" in their name return a sentence.

/// Sets the tag's station from a text such as "2".
/// @return false when the text is no station number from 1 to 247
bool takeStation(const QString& text, Tag& tag);
QString stationProblem(const QString& text);

/// Sets the tag's type and word order from a text such as "float32:high".
/// @return false when the text is no type
bool takeType(const QString& text, Tag& tag);
QString typeProblem(const QString& text);

/// The text of the tag's type for a tag file, such as "float32:high".
QString tagTypeText(const Tag& tag);

/// The problem with the tag's area; empty when the driver knows the area.
QString areaProblem(const Tag& tag, const DriverLibrary& driver);

/// The problem with the address in a known area; empty when the driver accepts the address. The
/// tag's number is then set.
QString addressProblem(Tag& tag, const DriverLibrary& driver);

/// Why a tag with a valid address cannot be written; empty when it can.
QString writeProblem(const Tag& tag, const DriverLibrary& driver);

QString quoted(const QString& text);

#endif
