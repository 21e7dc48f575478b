#ifndef TAG_TEXT_H
#define TAG_TEXT_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"

// The texts that a tag is made of: what they mean, and in words what is wrong with them.

/// Notes the station of a text such as "2".
/// @return false when it is none
bool takeStation(const QString& text, Tag& tag);
QString stationProblem(const QString& text);

/// Notes the type, and its word order, of a text such as "float32:high".
/// @return false when it is none
bool takeType(const QString& text, Tag& tag);
QString typeProblem(const QString& text);

/// The type as a tag file has it.
QString tagTypeText(const Tag& tag);

/// What is wrong with the tag's area; empty for one that the driver has.
QString areaProblem(const Tag& tag, const DriverLibrary& driver);

/// What is wrong with the address in a known area; empty when the driver takes it, and its number
/// is noted.
QString addressProblem(Tag& tag, const DriverLibrary& driver);

/// Why a tag, whose address the driver has judged good, cannot be written; empty when it can.
QString writeProblem(const Tag& tag, const DriverLibrary& driver);

QString quoted(const QString& text);

#endif
