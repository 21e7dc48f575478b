#ifndef VALUE_JSON_H
#define VALUE_JSON_H

#include "plan/tag.h"

#include <QByteArray>

/// The JSON text of a tag's value, one form for everything that the station tells: a decimal number
/// also for a tag whose own format is hexadecimal or binary, `true` or `false` for a bit, the texts
/// `"nan"`, `"inf"` and `"-inf"`, which JSON has no numbers for, and `null` without a value.
/// @param bytes  in the format of intf_getData; empty: the tag was never read
QByteArray valueJson(const Tag& tag, const QByteArray& bytes);

/// The same text of a value as a number.
/// @param number  as of tagValueNumber(); one that the tag's type does not have is `null`
QByteArray valueJson(const Tag& tag, double number);

#endif
